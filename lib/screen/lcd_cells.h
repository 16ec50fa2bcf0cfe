// Glyphs of the line LCD in the cell form it takes: a cell is 8 x 16 pixels as
// 16 bytes of pixel columns, bytes 0..7 for rows 0..7 and 8..15 for rows 8..15,
// the top row of each half in bit 7.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace qz::screen {

inline constexpr std::size_t cell_size = 16;

// One 8 x 8 block of rows (top bit leftmost) turned into 8 columns (top row in bit 7).
std::array<std::uint8_t, 8> lcd_transpose_block(std::span<const std::uint8_t, 8> rows);

// A 16-byte table entry of 16 rows to one cell.
std::array<std::uint8_t, cell_size> lcd_transpose_8x16(std::span<const std::uint8_t, 16> entry);
// A 32-byte table entry of 16 rows of two bytes to two cells, left then right.
std::array<std::uint8_t, 2 * cell_size> lcd_transpose_16x16(std::span<const std::uint8_t, 32> entry);

// A GB2312 pair to its two cells; blank where the table has no entry for it.
std::array<std::uint8_t, 2 * cell_size> lcd_glyph_pair(std::uint8_t first, std::uint8_t second);
// A single byte to its cell.
std::array<std::uint8_t, cell_size> lcd_glyph_byte(std::uint8_t byte);

// The text's cells: a byte above 0xA0 takes the byte behind it as a pair (also
// past `length`), and each text byte owns one cell. Gives the cells of all the
// bytes taken.
std::vector<std::uint8_t> lcd_render_cells(const std::uint8_t* text, int length);

// The number of bytes the same walk takes, without rendering.
int lcd_bytes_taken(const std::uint8_t* text, int length);

}  // namespace qz::screen
