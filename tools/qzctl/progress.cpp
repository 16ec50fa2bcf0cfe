#include "progress.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace qzctl {
namespace {

using Clock = std::chrono::steady_clock;
constexpr int bar_width = 30;

Clock::time_point started;
int last_tenth = -1;

}  // namespace

int show_progress(int total, int current, int status) {
    if (current == 0) {
        started = Clock::now();
        last_tenth = -1;
    }
    const int percent = total > 0 ? current * 100 / total : 100;
    const double elapsed = std::chrono::duration<double>(Clock::now() - started).count();
    const int seconds_left = current > 0 ? static_cast<int>(elapsed / current * (total - current) + 0.5) : 0;
    const bool done = current == total || status != 0;
    if (isatty(STDERR_FILENO)) {
        const int filled = bar_width * percent / 100;
        std::fprintf(stderr, "\r[%s%s] %d/%d packages %3d%%  %d:%02d left ", std::string(filled, '#').c_str(),
                     std::string(bar_width - filled, ' ').c_str(), current, total, percent, seconds_left / 60,
                     seconds_left % 60);
        if (done) std::fputc('\n', stderr);
    } else if (percent / 10 != last_tenth || done) {
        last_tenth = percent / 10;
        std::fprintf(stderr, "%d/%d packages %d%%, %d s left\n", current, total, percent, seconds_left);
    }
    if (status != 0) std::fprintf(stderr, "package %d refused (%d)\n", current, status);
    std::fflush(stderr);
    return 0;
}

}  // namespace qzctl
