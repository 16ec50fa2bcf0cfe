// FontMaker.dll as the library loads it: GBK text drawn by GDI into one-bit
// glyph cells, ink where the glyphs are and nowhere else.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "screen/font_component.h"

namespace qz::screen {
namespace {

struct Drawn {
    int result = 0;
    FontBits bits;
    std::vector<std::uint8_t> buffer;
};

Drawn draw(const std::string& row, int size) {
    Drawn drawn{.bits = {.font_height = size}, .buffer = std::vector<std::uint8_t>(0x10000)};
    drawn.result = load_font_bits(row, size, drawn.buffer, drawn.bits);
    return drawn;
}

// The ink of glyph `glyph` in columns [from, to) of its rows.
int ink(const Drawn& drawn, int glyph, int from, int to) {
    const int size = drawn.bits.font_height;
    const int row_bytes = (size + 7) / 8;
    int count = 0;
    for (int y = 0; y < size; ++y)
        for (int x = from; x < to; ++x)
            count += (drawn.buffer[static_cast<std::size_t>((glyph * size + y) * row_bytes + x / 8)] >> (7 - x % 8)) & 1;
    return count;
}

TEST(WindowsFontComponent, GbkTextComesOutAsGlyphCellsWithInkOnlyInsideThem) {
    // 你, a space, a, 好, a GBK pair that stands for no character, a lead byte
    // without its second byte; size 20 leaves 4 padding bits in each row.
    const Drawn drawn = draw("\xC4\xE3 a\xBA\xC3\xFF\xFF\xC4", 20);
    ASSERT_EQ(drawn.result, 1);
    EXPECT_EQ(drawn.bits.text_count, 6);
    EXPECT_EQ(drawn.bits.font_height, 20);
    ASSERT_EQ(drawn.bits.bit_length, 6 * 20 * 3);
    struct Glyph {
        int width;  // columns that may have ink
        bool inked;
    };
    const Glyph glyphs[] = {{20, true}, {10, false}, {10, true}, {20, true}, {20, false}, {20, false}};
    for (int at = 0; at < 6; ++at) {
        EXPECT_EQ(ink(drawn, at, 0, glyphs[at].width) > 0, glyphs[at].inked) << "glyph " << at;
        EXPECT_EQ(ink(drawn, at, glyphs[at].width, 24), 0) << "glyph " << at;
    }
    // A full-width glyph spreads over both halves of its cell and more than one row.
    EXPECT_GT(ink(drawn, 0, 0, 10), 0);
    EXPECT_GT(ink(drawn, 0, 10, 20), 0);
    for (auto at = static_cast<std::size_t>(drawn.bits.bit_length); at < drawn.buffer.size(); ++at)
        ASSERT_EQ(drawn.buffer[at], 0) << "written past the glyphs at " << at;
}

TEST(WindowsFontComponent, StaysLoadedAndDrawsAGlyphAlikeWhicheverSizeCameBefore) {
    const Drawn first = draw("\xD6\xD0", 24);
    ASSERT_EQ(first.result, 1);
    EXPECT_NE(draw("\xD6\xD0", 40).buffer, first.buffer);
    EXPECT_EQ(draw("\xD6\xD0", 24).buffer, first.buffer);
    EXPECT_EQ(draw("a", 0).result, 0);
    EXPECT_EQ(draw("a", 256).result, 0);
    // The library frees the component after each row; it stays loaded, font and glyphs with it.
    EXPECT_NE(GetModuleHandleA("FontMaker.dll"), nullptr);
}

}  // namespace
}  // namespace qz::screen
