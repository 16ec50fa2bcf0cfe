#include "sim/models/pinpad/keypad_key_table.h"

namespace qz::sim {

std::array<KeypadKey, keypad_key_rows> keypad_key_table() {
    std::array<KeypadKey, keypad_key_rows> table{};
    std::uint32_t state = 0x2F6B3D19;
    for (KeypadKey& row : table)
        for (std::uint8_t& byte : row) {
            state = state * 1103515245u + 12345u;
            byte = static_cast<std::uint8_t>('A' + (state >> 16) % 26);
        }
    return table;
}

}  // namespace qz::sim
