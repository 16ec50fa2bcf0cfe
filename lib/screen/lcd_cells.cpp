#include "screen/lcd_cells.h"

#include <algorithm>

#include "screen/lcd_fonts.h"

namespace qz::screen {
namespace {

constexpr std::uint8_t pair_lead_above = 0xA0;
constexpr int gb_columns = 94;

bool opens_pair(std::uint8_t byte) { return byte > pair_lead_above; }

}  // namespace

std::array<std::uint8_t, 8> lcd_transpose_block(std::span<const std::uint8_t, 8> rows) {
    std::array<std::uint8_t, 8> columns{};
    for (int c = 0; c < 8; ++c)
        for (int r = 0; r < 8; ++r)
            if ((rows[static_cast<std::size_t>(r)] >> (7 - c)) & 1) columns[static_cast<std::size_t>(c)] |= static_cast<std::uint8_t>(0x80 >> r);
    return columns;
}

std::array<std::uint8_t, cell_size> lcd_transpose_8x16(std::span<const std::uint8_t, 16> entry) {
    std::array<std::uint8_t, cell_size> cell{};
    for (std::size_t half = 0; half < 2; ++half) {
        const auto block = lcd_transpose_block(entry.subspan(half * 8).first<8>());
        std::copy(block.begin(), block.end(), cell.begin() + static_cast<std::ptrdiff_t>(half * 8));
    }
    return cell;
}

std::array<std::uint8_t, 2 * cell_size> lcd_transpose_16x16(std::span<const std::uint8_t, 32> entry) {
    std::array<std::uint8_t, 2 * cell_size> cells{};
    for (std::size_t side = 0; side < 2; ++side) {
        std::array<std::uint8_t, 16> rows{};  // one byte of each row: the left or right half
        for (std::size_t r = 0; r < 16; ++r) rows[r] = entry[r * 2 + side];
        const auto cell = lcd_transpose_8x16(rows);
        std::copy(cell.begin(), cell.end(), cells.begin() + static_cast<std::ptrdiff_t>(side * cell_size));
    }
    return cells;
}

std::array<std::uint8_t, 2 * cell_size> lcd_glyph_pair(std::uint8_t first, std::uint8_t second) {
    const int row = static_cast<std::uint8_t>(first - 160);
    const int column = static_cast<std::uint8_t>(second - 160);
    const int entry = (row - 1) * gb_columns + column - 1;
    if (entry < 0 || static_cast<std::size_t>(entry) >= lcd_pair_entries) return {};
    return lcd_transpose_16x16(std::span(lcd_font_16x16).subspan(static_cast<std::size_t>(entry) * 32).first<32>());
}

std::array<std::uint8_t, cell_size> lcd_glyph_byte(std::uint8_t byte) {
    return lcd_transpose_8x16(std::span(lcd_font_8x16).subspan(std::size_t{byte} * 16).first<16>());
}

std::vector<std::uint8_t> lcd_render_cells(const std::uint8_t* text, int length) {
    std::vector<std::uint8_t> cells;
    for (int taken = 0; taken < length;) {
        if (opens_pair(text[taken])) {
            const auto pair = lcd_glyph_pair(text[taken], text[taken + 1]);
            cells.insert(cells.end(), pair.begin(), pair.end());
            taken += 2;
        } else {
            const auto cell = lcd_glyph_byte(text[taken]);
            cells.insert(cells.end(), cell.begin(), cell.end());
            taken += 1;
        }
    }
    return cells;
}

int lcd_bytes_taken(const std::uint8_t* text, int length) {
    int taken = 0;
    while (taken < length) taken += opens_pair(text[taken]) ? 2 : 1;
    return taken;
}

}  // namespace qz::screen
