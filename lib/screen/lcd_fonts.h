// The line LCD's raster tables, generated at build time from a bitmap font.
#pragma once

#include <array>
#include <cstdint>

namespace qz::screen {

// 16 x 16 GB2312 glyphs, 32 bytes each (16 rows of two bytes, left byte first,
// top bit leftmost); entry (first - 0xA1) * 94 + (second - 0xA1).
inline constexpr std::size_t lcd_pair_entries = 8363;
extern const std::array<std::uint8_t, lcd_pair_entries * 32> lcd_font_16x16;

// 8 x 16 glyphs by byte value, 16 bytes each (16 rows of one byte).
extern const std::array<std::uint8_t, 256 * 16> lcd_font_8x16;

}  // namespace qz::screen
