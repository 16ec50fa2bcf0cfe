#include "glyph_image.h"

namespace fontmaker {
namespace {

constexpr int ink_threshold = 128;  // of a grey level 0..255

bool ink_at(const GlyphImage& image, int row, int column) {
    const std::uint8_t* line = image.rows + row * image.pitch;
    if (image.one_bit) return (line[column / 8] >> (7 - column % 8)) & 1;
    return line[column] >= ink_threshold;
}

}  // namespace

void place_glyph(const GlyphImage& image, FontExtent extent, int size, int width, std::span<std::uint8_t> cell,
                 std::size_t row_bytes) {
    const long whole = extent.ascent + extent.descent;
    const int baseline = whole > 0 ? static_cast<int>(extent.ascent * size / whole) : size;
    const int top = baseline - image.top;
    const int left = (width - image.advance) / 2 + image.left;
    for (int row = 0; row < image.height; ++row) {
        const int y = top + row;
        if (y < 0 || y >= size) continue;
        for (int column = 0; column < image.width; ++column) {
            const int x = left + column;
            if (x < 0 || x >= width || !ink_at(image, row, column)) continue;
            cell[static_cast<std::size_t>(y) * row_bytes + static_cast<std::size_t>(x / 8)] |=
                static_cast<std::uint8_t>(0x80 >> (x % 8));
        }
    }
}

}  // namespace fontmaker
