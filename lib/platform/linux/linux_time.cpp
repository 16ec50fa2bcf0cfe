#include <ctime>
#include <cerrno>

#include <sys/prctl.h>

#include "platform/linux/linux_platform.h"

namespace qz::platform {

std::uint32_t LinuxPlatform::tick_ms() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000);
}

void LinuxPlatform::sleep_ms(std::uint32_t ms) {
    timespec wanted{static_cast<time_t>(ms / 1000), static_cast<long>(ms % 1000) * 1'000'000};
    while (nanosleep(&wanted, &wanted) == -1 && errno == EINTR) {
    }
}

std::uint64_t LinuxPlatform::tick_us() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

// Paced writes sleep once a report, so a wake-up late by the timer's slack
// (50 us by default) and the scheduler's latency would add up over thousands of
// reports: the thread sleeps with a slack of 1 ns until shortly before the
// deadline and polls the clock for the rest.
void LinuxPlatform::sleep_until_us(std::uint64_t deadline_us) {
    constexpr std::uint64_t polled_us = 150;
    if (deadline_us > tick_us() + polled_us) {
        const std::uint64_t wake_us = deadline_us - polled_us;
        const timespec wake{static_cast<time_t>(wake_us / 1'000'000), static_cast<long>(wake_us % 1'000'000) * 1000};
        const int slack_ns = prctl(PR_GET_TIMERSLACK);
        prctl(PR_SET_TIMERSLACK, 1UL);
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &wake, nullptr) == EINTR) {
        }
        if (slack_ns > 0) prctl(PR_SET_TIMERSLACK, static_cast<unsigned long>(slack_ns));
    }
    while (tick_us() < deadline_us) {
    }
}

LocalTime LinuxPlatform::local_time() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    localtime_r(&now.tv_sec, &parts);
    return LocalTime{
        .year = parts.tm_year + 1900,
        .month = parts.tm_mon + 1,
        .day = parts.tm_mday,
        .hour = parts.tm_hour,
        .minute = parts.tm_min,
        .second = parts.tm_sec,
        .millisecond = static_cast<int>(now.tv_nsec / 1'000'000),
    };
}

}  // namespace qz::platform
