// A glyph image as a font engine draws it, and its placement into a cell of
// one-bit rows, the same for every engine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace fontmaker {

struct GlyphImage {
    const std::uint8_t* rows = nullptr;  // top row first
    std::ptrdiff_t pitch = 0;            // bytes from one row to the next
    bool one_bit = false;                // one bit a pixel (top bit leftmost), else one grey byte
    int height = 0;
    int width = 0;
    int left = 0;     // from the pen to the image's first column
    int top = 0;      // from the baseline up to the image's first row
    int advance = 0;  // of the pen, in pixels
};

// The font's extent above and below the baseline, in any one unit.
struct FontExtent {
    long ascent = 0;
    long descent = 0;
};

// Sets the ink of `image` in a cell of `size` rows of `row_bytes` bytes: the
// baseline where the font's ascent over its whole extent puts it, the pen
// advance centred across the cell's `width` pixels. Ink outside the cell is
// dropped.
void place_glyph(const GlyphImage& image, FontExtent extent, int size, int width, std::span<std::uint8_t> cell,
                 std::size_t row_bytes);

}  // namespace fontmaker
