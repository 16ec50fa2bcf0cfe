// Statuses the simulated terminal puts into the first two bytes of a reply.
// They follow the familiar smart card convention, and all lie below 0x8000 so
// the host sees them as negative results.
#pragma once

#include <cstdint>

namespace qz::sim::status {

inline constexpr std::uint16_t ok = 0x0000;
// The payload is too short or too long for the command.
inline constexpr std::uint16_t wrong_length = 0x6700;
// A parameter is outside what the device holds (an EEPROM address, a count).
inline constexpr std::uint16_t out_of_range = 0x6B00;
// No one finished keying a PIN before the time-out.
inline constexpr std::uint16_t entry_timed_out = 0x6400;
// The data of the command make no sense to the device (an unknown letter, a PIN
// too short for a PIN block).
inline constexpr std::uint16_t wrong_data = 0x6A80;
// A key that the command names has never been loaded.
inline constexpr std::uint16_t key_missing = 0x6A88;
// A data block came with no transfer open for it, or more bytes than announced.
inline constexpr std::uint16_t out_of_sequence = 0x6985;
// No device model answers this instruction of a known class.
inline constexpr std::uint16_t instruction_unknown = 0x6D00;
// No device model answers this class.
inline constexpr std::uint16_t class_unknown = 0x6E00;
// The request frame itself was damaged: wrong ETX or BCC, or no class and instruction.
inline constexpr std::uint16_t damaged_request = 0x6F00;

}  // namespace qz::sim::status
