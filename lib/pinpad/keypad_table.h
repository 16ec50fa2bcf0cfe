// The key table that the library shares with the terminal's keypad firmware: ten
// rows of eight upper-case letters, each row one DES key for wrapping a session key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "pinpad/wiped_bytes.h"

namespace qz::pinpad {

inline constexpr std::size_t keypad_table_rows = 10;
inline constexpr std::size_t keypad_key_size = 8;

// The table for the length of one protected entry. It is assembled byte by byte
// when constructed (never held in the program as one value) and wiped when destroyed.
class KeypadKeyTable {
public:
    KeypadKeyTable();

    // Row `index` (below keypad_table_rows) as a DES key.
    std::span<const std::uint8_t, keypad_key_size> row(std::size_t index) const;

private:
    WipedBytes<keypad_table_rows * keypad_key_size> sMainPwd;
};

}  // namespace qz::pinpad
