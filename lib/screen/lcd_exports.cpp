// The line LCD (class 0x00): text rendered here into cells, or sent as bytes for
// the terminal to render, and its single commands.
#include "link/command.h"
#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"
#include "screen/lcd_cells.h"

namespace {

using qz::link::Payload;

constexpr std::uint8_t lcd_class = 0x00;
constexpr std::uint8_t cells_instruction = 0x0C;
constexpr std::uint8_t clear_instruction = 0x0D;
constexpr std::uint8_t text_instruction = 0x10;
constexpr std::uint8_t brightness_instruction = 0x11;
constexpr std::uint8_t backlight_instruction = 0x12;
constexpr int lines = 4;
constexpr int columns = 16;
constexpr int bad = qz::link::status_bad_argument;

int send(int icdev, const Payload& payload) {
    qz::link::Reply<64> reply;
    return qz::link::transact(icdev, payload, reply);
}

bool placement_ok(int line, int column, int last_column, int length, const unsigned char* text) {
    return line >= 0 && line < lines && column >= 0 && column <= last_column && length >= 0 &&
           length <= columns - column && (text != nullptr || length == 0);
}

Payload text_head(std::uint8_t instruction, int line, int column) {
    return Payload{lcd_class, instruction, 0x00, 0x00, static_cast<std::uint8_t>(line), static_cast<std::uint8_t>(column)};
}

int display_cells(int icdev, int line, int column, int last_column, int length, const unsigned char* text) {
    const qz::link::ExportLock lock;
    if (!placement_ok(line, column, last_column, length, text)) return bad;
    Payload payload = text_head(cells_instruction, line, column);
    if (length > 0) payload.add(qz::screen::lcd_render_cells(text, length));
    return send(icdev, payload);
}

}  // namespace

QZ_32_API int QZ_32_CALL lcd_display_string(int icdev, int line, int column, int length, const unsigned char* text) {
    return display_cells(icdev, line, column, columns - 2, length, text);
}

QZ_32_API int QZ_32_CALL lcd_display_string2(int icdev, int line, int column, int length, const unsigned char* text) {
    return display_cells(icdev, line, column, columns - 1, length, text);
}

QZ_32_API int QZ_32_CALL lcd_display_new(int icdev, int line, int column, int length, const unsigned char* text) {
    const qz::link::ExportLock lock;
    if (!placement_ok(line, column, columns - 1, length, text)) return bad;
    Payload payload = text_head(text_instruction, line, column);
    if (length > 0) payload.add(std::span(text, static_cast<std::size_t>(qz::screen::lcd_bytes_taken(text, length))));
    return send(icdev, payload);
}

QZ_32_API int QZ_32_CALL lcd_clear(int icdev) {
    const qz::link::ExportLock lock;
    return send(icdev, Payload{lcd_class, clear_instruction, 0x00});
}

QZ_32_API int QZ_32_CALL adjusts_Brightness(int icdev, unsigned char level) {
    const qz::link::ExportLock lock;
    if (level > 1) return bad;
    return send(icdev, Payload{lcd_class, brightness_instruction, 0x00, level});
}

QZ_32_API int QZ_32_CALL backlight_Delay(int icdev, unsigned char delay) {
    const qz::link::ExportLock lock;
    return send(icdev, Payload{lcd_class, backlight_instruction, 0x00, delay});
}
