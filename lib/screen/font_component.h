// The font component, which renders one row of text to one-bit glyph bitmaps.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace qz::screen {

// Loaded by this name, then from the library's own folder.
inline constexpr std::string_view font_library = "FontMaker.dll";

struct FontBits {
    int bit_length = 0;   // bytes written to the buffer
    int text_count = 0;   // glyphs
    int font_height = 0;  // in: the height asked for; out: the glyph height
};

// Loads the component, runs getFontBit(row, size, buffer, ...) and releases it:
// getFontBit's result, or 0 when the component or its entry cannot be had.
int load_font_bits(const std::string& row, int size, std::span<std::uint8_t> buffer, FontBits& bits,
                   std::string_view library = font_library);

}  // namespace qz::screen
