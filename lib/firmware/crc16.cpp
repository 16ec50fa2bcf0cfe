#include "firmware/crc16.h"

#include <array>

namespace qz::firmware {
namespace {

constexpr std::uint16_t polynomial = 0x1021;

// The CRC of each nibble value standing in the top four bits of the register.
constexpr std::array<std::uint16_t, 16> nibble_table = [] {
    std::array<std::uint16_t, 16> table{};
    for (unsigned nibble = 0; nibble < table.size(); ++nibble) {
        unsigned crc = nibble << 12;
        for (int bit = 0; bit < 4; ++bit) crc = (crc & 0x8000) ? (crc << 1) ^ polynomial : crc << 1;
        table[nibble] = static_cast<std::uint16_t>(crc);
    }
    return table;
}();

std::uint16_t shift_nibble(std::uint16_t crc, unsigned nibble) {
    return static_cast<std::uint16_t>((crc << 4) ^ nibble_table[(crc >> 12) ^ nibble]);
}

}  // namespace

std::uint16_t crc16_packet(std::span<const std::uint8_t> bytes) {
    std::uint16_t crc = 0;
    for (std::uint8_t byte : bytes) crc = shift_nibble(shift_nibble(crc, byte >> 4), byte & 0x0Fu);
    return crc;
}

}  // namespace qz::firmware
