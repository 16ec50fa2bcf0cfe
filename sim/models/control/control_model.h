// Class 0x00: the terminal's own control commands (version, speed, buzzer,
// display mode, card state, serial and registration numbers, EEPROM), and one
// diagnostic instruction of the simulator:
//
//   00 E0 <body>  echo: the reply data are the body (everything behind the
//                 instruction byte) unchanged, up to the 65522 bytes a reply
//                 frame holds; a longer body is refused with wrong_length.
//                 For link tests and benchmarks with frames of any size.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "sim/core/terminal.h"

namespace qz::sim {

inline constexpr std::size_t serial_number_length = 20;
// The EEPROM is addressed by a one-byte word number, so 512 bytes are all a
// command can reach.
inline constexpr std::size_t max_eeprom_size = 512;
inline constexpr std::size_t min_eeprom_size = 256;
inline constexpr std::string_view default_version_text = "QZ-SIM V1.00";
inline constexpr std::uint8_t echo_instruction = 0xE0;

struct ControlConfig {
    std::vector<std::uint8_t> version{default_version_text.begin(), default_version_text.end()};
    std::array<std::uint8_t, serial_number_length> serial_number{};
    std::vector<std::uint8_t> registration_number;
    std::vector<std::uint8_t> eeprom = std::vector<std::uint8_t>(max_eeprom_size, 0xFF);  // even size
};

class ControlModel final : public DeviceModel {
public:
    // The three bytes of a buzzer command, in the order they came.
    using Beep = std::array<std::uint8_t, 3>;

    ControlModel(ControlConfig config, SharedState& shared);

    std::vector<Route> routes() const override;
    Reply handle(const Command& command) override;

    // What the host has set, for tests and the program's log.
    const std::vector<Beep>& beeps() const { return beeps_; }
    std::optional<std::uint8_t> speed_code() const { return speed_code_; }
    std::optional<std::uint8_t> display_mode() const { return display_mode_; }
    std::span<const std::uint8_t> serial_number() const { return config_.serial_number; }
    std::span<const std::uint8_t> eeprom() const { return config_.eeprom; }

private:
    // Each takes the command body: the parameter byte, then the data.
    Reply version(std::span<const std::uint8_t> body);
    Reply beep(std::span<const std::uint8_t> body);
    Reply display(std::span<const std::uint8_t> body);
    Reply speed(std::span<const std::uint8_t> body);
    Reply card_state(std::span<const std::uint8_t> body);
    Reply write_serial_number(std::span<const std::uint8_t> body);
    Reply read_serial_number(std::span<const std::uint8_t> body);
    Reply registration_number(std::span<const std::uint8_t> body);
    Reply read_eeprom(std::span<const std::uint8_t> body);
    Reply write_eeprom(std::span<const std::uint8_t> body);
    Reply echo(std::span<const std::uint8_t> body);

    struct Instruction {
        std::uint8_t code;
        std::optional<std::size_t> body_length;  // nothing: the command checks its own length
        Reply (ControlModel::*run)(std::span<const std::uint8_t>);
        const char* name;
    };
    static const std::array<Instruction, 11> instructions;

    // The byte range of an EEPROM command (word, count_hi, count_lo in body[1..3]),
    // or nothing when it is odd or reaches past the end.
    std::optional<std::span<std::uint8_t>> eeprom_range(std::span<const std::uint8_t> body);

    ControlConfig config_;
    SharedState& shared_;
    std::vector<Beep> beeps_;
    std::optional<std::uint8_t> speed_code_;
    std::optional<std::uint8_t> display_mode_;
};

}  // namespace qz::sim
