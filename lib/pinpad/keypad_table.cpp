#include "pinpad/keypad_table.h"

namespace qz::pinpad {
namespace {

// The terminal derives the same bytes from the same recipe: starting from the state
// 0x2F6B3D19, for each byte in row order, state = state * 1103515245 + 12345 (mod 2^32),
// and the byte is 'A' + (state >> 16) % 26.
constexpr std::uint32_t table_seed = 0x2F6B3D19;
constexpr std::uint32_t multiplier = 1103515245;
constexpr std::uint32_t increment = 12345;
constexpr std::uint32_t letters = 26;

}  // namespace

KeypadKeyTable::KeypadKeyTable() {
    // Read through a volatile, so that the compiler can't fold the table into a constant.
    volatile std::uint32_t seed = table_seed;
    std::uint32_t state = seed;
    for (std::uint8_t& byte : sMainPwd.bytes) {
        state = state * multiplier + increment;
        byte = static_cast<std::uint8_t>('A' + (state >> 16) % letters);
    }
}

std::span<const std::uint8_t, keypad_key_size> KeypadKeyTable::row(std::size_t index) const {
    return std::span(sMainPwd.bytes).subspan(index * keypad_key_size).first<keypad_key_size>();
}

}  // namespace qz::pinpad
