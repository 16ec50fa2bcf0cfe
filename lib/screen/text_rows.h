// Text for the screen: rows split at the four characters "\r\n" (backslash, r,
// backslash, n), and the width class of each glyph of a row.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qz::screen {

inline constexpr std::string_view row_separator = "\\r\\n";
inline constexpr std::uint8_t full_width = 1;  // a two-byte character: the width is the font height
inline constexpr std::uint8_t half_width = 2;  // a one-byte character: half of it

// The rows of `text` in order; empty stretches make no row. Text after the last
// separator is a row too.
std::vector<std::string> split_text_rows(std::string_view text);

// One class a glyph: a byte with its top bit set opens a two-byte (full-width)
// character, any other byte is a half-width one.
std::vector<std::uint8_t> classify_glyphs(std::string_view row);

}  // namespace qz::screen
