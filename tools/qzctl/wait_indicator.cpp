#include "wait_indicator.h"

#include <unistd.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <iostream>
#include <mutex>

namespace qzctl {

WaitIndicator::WaitIndicator(std::string message) : message_(std::move(message)) {
    if (isatty(STDERR_FILENO) == 0) {
        std::cerr << message_ << " ...\n";
        return;
    }
    turning_ = std::jthread([this](std::stop_token stop) { turn(stop); });
}

WaitIndicator::~WaitIndicator() {
    if (!turning_.joinable()) return;
    turning_.request_stop();
    turning_.join();
    std::cerr << "\r\033[K" << std::flush;
}

void WaitIndicator::turn(const std::stop_token& stop) const {
    static constexpr std::array<char, 4> marks{'|', '/', '-', '\\'};
    std::mutex mutex;
    std::condition_variable_any woken;
    std::unique_lock lock(mutex);
    for (std::size_t step = 0; !stop.stop_requested(); ++step) {
        std::cerr << '\r' << message_ << ' ' << marks[step % marks.size()] << std::flush;
        woken.wait_for(lock, stop, std::chrono::milliseconds(150), [] { return false; });
    }
}

}  // namespace qzctl
