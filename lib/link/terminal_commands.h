// Class 0x00: the terminal's own commands, and their instruction bytes.
#pragma once

#include <cstdint>

namespace qz::link {

inline constexpr std::uint8_t terminal_class = 0x00;

namespace terminal {
inline constexpr std::uint8_t version = 0x01;
inline constexpr std::uint8_t beep = 0x02;
inline constexpr std::uint8_t display = 0x03;
inline constexpr std::uint8_t speed = 0x04;
inline constexpr std::uint8_t card_state = 0x07;
inline constexpr std::uint8_t write_serial_number = 0x08;  // also the keypad's entry, told apart by its body
inline constexpr std::uint8_t read_serial_number = 0x09;
inline constexpr std::uint8_t write_eeprom = 0x0A;
inline constexpr std::uint8_t read_eeprom = 0x0B;
inline constexpr std::uint8_t registration_number = 0x0F;
}  // namespace terminal

}  // namespace qz::link
