// What stands behind a device endpoint and answers the request frames that reach
// it: the simulated terminal, or a test's script of a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qz::sim {

class Responder {
public:
    virtual ~Responder() = default;
    // The bytes that go back on the wire for one whole request frame; none is silence.
    virtual std::vector<std::uint8_t> answer(std::span<const std::uint8_t> request_frame) = 0;
    // A reply is held back (for a person to act) and not yet given.
    virtual bool holding() const { return false; }
    // The held reply's bytes once ready; nothing while it still waits.
    virtual std::optional<std::vector<std::uint8_t>> release(std::chrono::steady_clock::time_point) {
        return std::nullopt;
    }
};

}  // namespace qz::sim
