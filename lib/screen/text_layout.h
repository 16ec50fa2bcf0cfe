// Text rows rendered through the font component and broken into the lines the
// terminal paints: a row that does not fit between x and the right edge goes
// on in further lines (wrapping) or is cut there.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "screen/font_component.h"

namespace qz::screen {

// One line for the terminal: its glyphs' width classes and bitmaps.
struct TextLine {
    int x = 0;
    int y = 0;
    int font_height = 0;
    std::span<const std::uint8_t> classes;
    std::span<const std::uint8_t> bitmap;
};

// Sends one line: 0 or the status that ends the drawing.
using LineSink = std::function<int(const TextLine&)>;

struct TextRequest {
    std::string_view text;
    int size = 0;  // rounded, 16..240
    int x = 0;     // even, with x + size within the screen
    int y = 0;
    bool wrap = false;
};

// Renders row by row and hands each line to `send`, while lines fit above the
// bottom edge. 0; -19 when the font component fails, gives other counts than
// the row has, or the text has more rows or glyphs than the screen takes;
// else the first non-zero result of `send`.
int lay_out_text(const TextRequest& request, const LineSink& send, std::string_view library = font_library);

}  // namespace qz::screen
