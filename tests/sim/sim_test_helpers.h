// Helpers shared by the simulator's tests.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "sim/core/scenario.h"
#include "sim/core/simulator.h"
#include "sim/core/terminal.h"

namespace qz::sim::test {

using Bytes = std::vector<std::uint8_t>;

// Bytes written in hexadecimal, blanks allowed: "02 00 03".
Bytes hex(std::string_view text);

// `count` bytes 0, 1, 2, ... (mod 256), none of them STX by accident at the front.
Bytes pattern(std::size_t count, std::uint8_t first = 0x10);

// A model of class 0x7E for link tests: instruction 01 answers its body back,
// instruction 02 answers as many pattern bytes as its two body bytes say.
class EchoModel final : public DeviceModel {
public:
    static constexpr std::uint8_t class_byte = 0x7E;
    std::vector<Route> routes() const override { return {{class_byte, {}}}; }
    Reply handle(const Command& command) override;
};

// A terminal from the default scenario with the echo model added.
std::shared_ptr<Terminal> echo_terminal(const Scenario& scenario = {});

// Payload 7E 02 hi lo: asks the echo model for `count` bytes of reply data.
Bytes ask_for(std::size_t count);

}  // namespace qz::sim::test
