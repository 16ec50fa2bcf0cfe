// A reply a device owes until a person acts: the terminal keeps the request
// open, and the reply goes out once the person has acted or the time is up.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "sim/core/terminal.h"

namespace qz::sim {

using HoldClock = std::chrono::steady_clock;

struct HeldReply {
    std::string waiting_for;  // what the person is asked for, e.g. "PIN"
    HoldClock::time_point deadline;
    // The reply once the person has acted; nothing while they are still at it.
    std::function<std::optional<Reply>()> ready;
    Reply on_timeout;
};

}  // namespace qz::sim
