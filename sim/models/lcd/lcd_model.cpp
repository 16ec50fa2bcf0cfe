#include "sim/models/lcd/lcd_model.h"

#include "screen/lcd_fonts.h"
#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t lcd_class = 0x00;
constexpr std::uint8_t cells_instruction = 0x0C;
constexpr std::uint8_t clear_instruction = 0x0D;
constexpr std::uint8_t text_instruction = 0x10;
constexpr std::uint8_t brightness_instruction = 0x11;
constexpr std::uint8_t backlight_instruction = 0x12;
constexpr std::size_t text_head = 4;  // parameter, 00, line, column
constexpr std::size_t cell_bytes = 16;

bool placement_ok(std::span<const std::uint8_t> body) {
    return body.size() >= text_head && body[2] < lcd_lines && body[3] < lcd_columns;
}

// A table glyph of `width` 8 or 16 pixels (rows of width / 8 bytes) as cells of columns.
std::vector<std::uint8_t> glyph_cells(std::span<const std::uint8_t> rows, int width) {
    const int row_bytes = width / 8;
    std::vector<std::uint8_t> cells(static_cast<std::size_t>(row_bytes) * cell_bytes);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < width; ++x)
            if ((rows[static_cast<std::size_t>(y * row_bytes + x / 8)] >> (7 - x % 8)) & 1)
                cells[static_cast<std::size_t>((x / 8) * 16 + (y / 8) * 8 + x % 8)] |= static_cast<std::uint8_t>(0x80 >> (y % 8));
    return cells;
}

}  // namespace

std::vector<Route> LcdModel::routes() const {
    return {Route{lcd_class, {cells_instruction, clear_instruction, text_instruction, brightness_instruction,
                              backlight_instruction}}
                .named("LCD", {{cells_instruction, "cells"},
                               {clear_instruction, "clear"},
                               {text_instruction, "text"},
                               {brightness_instruction, "brightness"},
                               {backlight_instruction, "backlight delay"}})};
}

Reply LcdModel::handle(const Command& command) {
    const auto body = command.body();
    switch (command.instruction()) {
        case cells_instruction: return cells(body);
        case text_instruction: return text(body);
        case clear_instruction:
            if (body.size() != 1) return Reply::failure(status::wrong_length);
            pixels_.fill(false);
            return changed();
        case brightness_instruction:
            if (body.size() != 2) return Reply::failure(status::wrong_length);
            if (body[1] > 1) return Reply::failure(status::out_of_range);
            brightness_ = body[1];
            return {};
        default:
            if (body.size() != 2) return Reply::failure(status::wrong_length);
            backlight_delay_ = body[1];
            return {};
    }
}

Reply LcdModel::changed() {
    for (const auto& listener : listeners_) listener(*this);
    return {};
}

void LcdModel::put_cell(int line, int column, std::span<const std::uint8_t> cell) {
    if (column >= lcd_columns) return;
    for (int x = 0; x < 8; ++x)
        for (int y = 0; y < 16; ++y)
            pixels_[static_cast<std::size_t>((line * 16 + y) * lcd_width + column * 8 + x)] =
                (cell[static_cast<std::size_t>((y / 8) * 8 + x)] >> (7 - y % 8)) & 1;
}

Reply LcdModel::cells(std::span<const std::uint8_t> body) {
    if (!placement_ok(body) || (body.size() - text_head) % cell_bytes != 0) return Reply::failure(status::wrong_length);
    const auto data = body.subspan(text_head);
    for (std::size_t i = 0; i < data.size() / cell_bytes; ++i)
        put_cell(body[2], body[3] + static_cast<int>(i), data.subspan(i * cell_bytes, cell_bytes));
    return changed();
}

Reply LcdModel::text(std::span<const std::uint8_t> body) {
    if (!placement_ok(body)) return Reply::failure(status::wrong_length);
    const auto bytes = body.subspan(text_head);
    int column = body[3];
    for (std::size_t at = 0; at < bytes.size();) {
        std::vector<std::uint8_t> cells(2 * cell_bytes);  // blank where the table has no glyph
        if (bytes[at] > 0xA0) {
            // GB2312 row and column from 0xA1; a second byte below that wraps past the table.
            const std::size_t entry = at + 1 < bytes.size() ? (bytes[at] - 0xA1u) * 94 + (bytes[at + 1] - 0xA1u)
                                                            : screen::lcd_pair_entries;
            if (entry < screen::lcd_pair_entries)
                cells = glyph_cells(std::span(screen::lcd_font_16x16).subspan(entry * 32, 32), 16);
            at += 2;
        } else {
            cells = glyph_cells(std::span(screen::lcd_font_8x16).subspan(std::size_t{bytes[at]} * 16, 16), 8);
            at += 1;
        }
        for (std::size_t c = 0; c < cells.size() / cell_bytes; ++c)
            put_cell(body[2], column++, std::span(cells).subspan(c * cell_bytes, cell_bytes));
    }
    return changed();
}

std::string LcdModel::as_text() const {
    std::string text;
    for (int y = 0; y < lcd_height; ++y) {
        for (int x = 0; x < lcd_width; ++x) text += lit(x, y) ? '#' : '.';
        text += '\n';
    }
    return text;
}

std::vector<std::uint8_t> LcdModel::rgb() const {
    std::vector<std::uint8_t> bytes;
    for (const bool on : pixels_) bytes.insert(bytes.end(), on ? std::initializer_list<std::uint8_t>{20, 40, 20}
                                                                : std::initializer_list<std::uint8_t>{170, 210, 120});
    return bytes;
}

}  // namespace qz::sim
