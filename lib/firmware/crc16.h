// The check value of a scanner firmware package.
#pragma once

#include <cstdint>
#include <span>

namespace qz::firmware {

// CRC-16 with the polynomial 0x1021, initial value 0, no reflection and no final
// XOR, worked out a nibble at a time from a table of 16 entries.
std::uint16_t crc16_packet(std::span<const std::uint8_t> bytes);

}  // namespace qz::firmware
