#include "platform/windows/windows_platform.h"

namespace qz::platform {

std::uint32_t WindowsPlatform::tick_ms() { return GetTickCount(); }

void WindowsPlatform::sleep_ms(std::uint32_t ms) { Sleep(ms); }

LocalTime WindowsPlatform::local_time() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return LocalTime{
        .year = now.wYear,
        .month = now.wMonth,
        .day = now.wDay,
        .hour = now.wHour,
        .minute = now.wMinute,
        .second = now.wSecond,
        .millisecond = now.wMilliseconds,
    };
}

}  // namespace qz::platform
