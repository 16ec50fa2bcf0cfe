// Tells the person at the terminal, on standard error, that the program waits for
// keys, for as long as the indicator lives: a turning mark on a terminal, one line
// otherwise.
#pragma once

#include <string>
#include <thread>

namespace qzctl {

class WaitIndicator {
public:
    explicit WaitIndicator(std::string message);
    ~WaitIndicator();
    WaitIndicator(const WaitIndicator&) = delete;
    WaitIndicator& operator=(const WaitIndicator&) = delete;

private:
    void turn(const std::stop_token& stop) const;

    std::string message_;
    std::jthread turning_;  // last: stopped and joined before the message goes
};

}  // namespace qzctl
