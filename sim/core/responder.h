// What stands behind a device endpoint and answers the request frames that reach
// it: the simulated terminal, or a test's script of a terminal.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace qz::sim {

class Responder {
public:
    virtual ~Responder() = default;
    // The bytes that go back on the wire for one whole request frame; none is silence.
    virtual std::vector<std::uint8_t> answer(std::span<const std::uint8_t> request_frame) = 0;
};

}  // namespace qz::sim
