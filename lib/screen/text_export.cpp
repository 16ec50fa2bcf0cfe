// ShowTextInScreen: checks and rounding, then each line as a text transfer of
// its own (first command 0x10 with the glyphs' width classes, data 0x20).
#include <cstring>

#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"
#include "screen/colour.h"
#include "screen/font_size.h"
#include "screen/screen_commands.h"
#include "screen/text_layout.h"

namespace {

using namespace qz::screen;

constexpr std::size_t max_text_length = 2078;
constexpr int min_font_size = 16;
constexpr int max_font_size = 240;
constexpr std::size_t max_text_bitmap = 0x100000;
constexpr ColourWord default_foreground = 0xF800;
constexpr ColourWord default_background = 0xFFFF;

struct LineStyle {
    ColourWord foreground;
    ColourWord background;
    int wrap_mode;
    int text_option;
};

int send_text_line(int icdev, const LineStyle& style, const TextLine& line) {
    qz::link::Payload first = screen_payload(Instruction::text_first);
    first.add(static_cast<std::uint8_t>(line.classes.size())).add(static_cast<std::uint8_t>(line.font_height));
    first.add_be16(style.foreground).add_be16(style.background);
    first.add_be16(static_cast<std::uint16_t>(line.x)).add_be16(static_cast<std::uint16_t>(line.y)).add_be16(0);
    const auto length = static_cast<std::uint32_t>(line.bitmap.size());
    first.add_be16(static_cast<std::uint16_t>(length >> 16)).add_be16(static_cast<std::uint16_t>(length));
    first.add(static_cast<std::uint8_t>(style.wrap_mode)).add(static_cast<std::uint8_t>(style.text_option));
    first.add(line.classes);
    return send_transfer(icdev, first, Instruction::text_data, line.bitmap, false);
}

// The colour word of a colour string, `fallback` for none; nothing if it does not parse.
std::optional<ColourWord> colour_or(const char* text, ColourWord fallback) {
    return text == nullptr ? fallback : parse_color_string(text);
}

}  // namespace

QZ_32_API int QZ_32_CALL ShowTextInScreen(int icdev, const char* text, int fontSize, const char* fontColor,
                                const char* backColor, int x, int y, int wrapMode, int textOption) {
    const qz::link::ExportLock lock;
    constexpr int bad = qz::link::status_bad_argument;
    if (x < 0 || x > screen_width || y < 0 || y > screen_height) return bad;
    if (text == nullptr) return bad;
    const std::size_t length = strnlen(text, max_text_length + 1);
    if (length == 0 || length > max_text_length) return bad;
    const auto foreground = colour_or(fontColor, default_foreground);
    const auto background = colour_or(backColor, default_background);
    if (!foreground || !background) return bad;

    if (fontSize < 0 || fontSize > 2 * max_font_size) return bad;  // refused after rounding as well
    const int size = round_font_size(fontSize);
    x = round_up_even(x);
    y = round_up_even(y);
    if (size < min_font_size || size > max_font_size || x + size > screen_width || y + size > screen_height)
        return bad;
    if (length * static_cast<std::size_t>(size * padded_size(size)) / 8 > max_text_bitmap) return bad;

    const LineStyle style{*foreground, *background, wrapMode, textOption};
    return lay_out_text({{text, length}, size, x, y, wrapMode == 1},
                        [&](const TextLine& line) { return send_text_line(icdev, style, line); });
}
