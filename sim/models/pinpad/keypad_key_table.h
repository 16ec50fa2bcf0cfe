// The key table that the terminal's keypad shares with the host library: ten rows
// of eight upper-case letters, each row a DES key under which the host wraps the
// session key of a protected entry.
//
// Both sides derive the bytes from one recipe: starting from the state 0x2F6B3D19,
// for each byte in row order, state = state * 1103515245 + 12345 (mod 2^32), and the
// byte is 'A' + (state >> 16) % 26.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace qz::sim {

inline constexpr std::size_t keypad_key_rows = 10;
using KeypadKey = std::array<std::uint8_t, 8>;

std::array<KeypadKey, keypad_key_rows> keypad_key_table();

}  // namespace qz::sim
