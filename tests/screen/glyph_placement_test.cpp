// The font component's placement of a glyph image in its cell, the same for
// every font engine: baseline, centring, clipping at the cell's edges, ink of
// one-bit and grey images.
#include <gtest/gtest.h>

#include <vector>

#include "glyph_image.h"

namespace fontmaker {
namespace {

TEST(GlyphPlacement, InkLandsWhereBaselineAndCentringPutItAndNowhereElse) {
    // Two rows of three inked pixels (a third row of ink after them is not the
    // image's); an 8-pixel cell with one byte a row.
    const std::vector<std::uint8_t> block{0xE0, 0xE0, 0xFF};
    const std::vector<std::uint8_t> grey{200, 127, 128};
    struct Case {
        const char* what;
        GlyphImage image;
        int width;
        std::vector<std::uint8_t> cell;
    };
    // Extent 3 above and 1 below the baseline puts it at row 6 of 8.
    const Case cases[] = {
        {"inside", {block.data(), 1, true, 2, 3, 1, 2, 4}, 8, {0, 0, 0, 0, 0x1C, 0x1C, 0, 0}},
        {"cut at the right edge and the top", {block.data(), 1, true, 2, 3, 4, 7, 4}, 8, {0x03, 0, 0, 0, 0, 0, 0, 0}},
        {"cut at a half-width cell's edge", {block.data(), 1, true, 2, 3, 3, 0, 4}, 4, {0, 0, 0, 0, 0, 0, 0x10, 0x10}},
        {"below the cell", {block.data(), 1, true, 2, 3, 0, -2, 8}, 8, {0, 0, 0, 0, 0, 0, 0, 0}},
        {"grey from 128 up", {grey.data(), 3, false, 1, 3, 0, 1, 8}, 8, {0, 0, 0, 0, 0, 0xA0, 0, 0}},
    };
    for (const Case& c : cases) {
        std::vector<std::uint8_t> cell(9);  // the last byte, below the cell, stays blank
        place_glyph(c.image, {3, 1}, 8, c.width, cell, 1);
        EXPECT_EQ(cell.back(), 0) << c.what;
        cell.pop_back();
        EXPECT_EQ(cell, c.cell) << c.what;
    }
}

}  // namespace
}  // namespace fontmaker
