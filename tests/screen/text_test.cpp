// Text: the rounding of the size, the rows, the limits, and the lines that a row
// becomes at the right and the bottom edge, with the project's font component.
#include <algorithm>
#include <string>

#include "qz_32.h"
#include "screen/font_component.h"
#include "screen/font_size.h"
#include "screen/text_layout.h"
#include "screen/text_rows.h"
#include "screen_fixture.h"

namespace qz::test {
namespace {

TEST(FontSize, RoundsToTheDrawnSizes) {
    const std::vector<std::pair<int, int>> cases{{13, 16}, {16, 16}, {17, 20}, {25, 28}, {29, 28}, {30, 28},
                                                 {31, 28}, {32, 36}, {33, 36}, {36, 36}, {64, 64}, {89, 92},
                                                 {96, 100}, {159, 156}, {160, 164}, {223, 220}, {224, 228},
                                                 {237, 240}, {12, 12}, {11, 8}, {241, 244}};
    for (const auto& [given, drawn] : cases) EXPECT_EQ(screen::round_font_size(given), drawn) << given;
}

TEST(TextRows, SplitAtTheFourCharacterSeparator) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases{
        {"abc", {"abc"}},
        {"a\\r\\nb\\r\\n", {"a", "b"}},
        {"\\r\\na\\r\\n\\r\\nb", {"a", "b"}},
        {"a\r\nb", {"a\r\nb"}},
    };
    for (const auto& [text, rows] : cases) EXPECT_EQ(screen::split_text_rows(text), rows) << text;
    EXPECT_EQ(screen::classify_glyphs("a\xC4\xE3z\xB0"), (std::vector<std::uint8_t>{2, 1, 2, 1}));
}

using Text = ScreenTest;

TEST_F(Text, ThreeLettersAtSize24GoOutAsTwoTransactions) {
    ASSERT_EQ(ShowTextInScreen(handle, "abc", 24, nullptr, nullptr, 0, 0, 1, 0), 0);
    ASSERT_EQ(os.requests.size(), 2u);
    EXPECT_EQ(payloads()[0], (Bytes{0xCD, 0x10, 0x00, 0x03, 0x18, 0xF8, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x00,
                                    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xD8, 0x01, 0x00, 0x02, 0x02, 0x02}));
    EXPECT_EQ(payloads()[1].size(), 3u + 216u);
    EXPECT_NE(payloads()[1], Bytes(3 + 216, 0x00)) << "the glyphs have ink";
}

TEST_F(Text, LimitsRefuseBeforeSending) {
    std::string longest;  // 2078 bytes in 21 rows
    for (int row = 0; row < 20; ++row) longest += std::string(96, 'a') + "\\r\\n";
    longest += std::string(78, 'a');
    struct Case {
        std::string text;
        int size, x, y;
        const char* colour;
        int result;
    };
    const std::vector<Case> cases{
        {longest, 16, 0, 0, nullptr, 0},      {longest + "a", 16, 0, 0, nullptr, -19},
        {"", 16, 0, 0, nullptr, -19},         {"a", 12, 0, 0, nullptr, -19},
        {"a", 241, 0, 0, nullptr, -19},       {"a", 16, 799, 0, nullptr, -19},
        {"a", 16, 0, 479, nullptr, -19},      {"a", 16, 784, 464, nullptr, 0},
        {"a", 16, -1, 0, nullptr, -19},       {"a", 16, 0, 0, "1,2", -19},
        {std::string(145, 'a'), 240, 0, 0, nullptr, 0},
        {std::string(146, 'a'), 240, 0, 0, nullptr, -19},
    };
    for (const Case& c : cases) {
        os.requests.clear();
        EXPECT_EQ(ShowTextInScreen(handle, c.text.c_str(), c.size, c.colour, nullptr, c.x, c.y, 1, 0), c.result)
            << c.text.size() << " " << c.size;
        EXPECT_EQ(os.requests.empty(), c.result != 0);
    }
}

// The (x, y, glyph count) of each line that lay_out_text hands on.
struct LineCase {
    std::string text;
    int size, x, y;
    bool wrap;
    std::vector<std::array<int, 3>> lines;
};

TEST(TextLines, WrappingCuttingAndTheBottomEdge) {
    const std::vector<LineCase> cases{
        // 12 half-width glyphs of 8 pixels where 48 are left: lines of 6.
        {"abcdefghijkl", 16, 752, 0, true, {{752, 0, 6}, {752, 16, 6}}},
        {"abcdefghijkl\\r\\nxy", 16, 752, 0, false, {{752, 0, 6}, {752, 16, 2}}},
        // Widths adding up to exactly what is left: one line, sent the line-by-line way.
        {"abcdef", 16, 752, 0, true, {{752, 0, 6}}},
        // Room for one full-width glyph a line.
        {"\xC4\xE3\xBA\xC3", 16, 770, 0, true, {{770, 0, 1}, {770, 16, 1}}},
        {"a\xC4\xE3", 16, 778, 0, true, {{778, 0, 1}, {778, 16, 1}}},
        // Rows below the bottom edge are not drawn; wrapped lines stop there too.
        {"a\\r\\nb\\r\\nc", 240, 0, 0, true, {{0, 0, 1}, {0, 240, 1}}},
        {"abcdefghijkl", 16, 752, 448, true, {{752, 448, 6}, {752, 464, 6}}},
        {"abcdefghijklmnopqr", 16, 752, 448, true, {{752, 448, 6}, {752, 464, 6}}},
    };
    for (const LineCase& c : cases) {
        std::vector<std::array<int, 3>> lines;
        const auto record = [&](const screen::TextLine& line) {
            EXPECT_EQ(line.bitmap.size(), line.classes.size() * c.size * ((c.size + 7) / 8));
            lines.push_back({line.x, line.y, static_cast<int>(line.classes.size())});
            return 0;
        };
        EXPECT_EQ(screen::lay_out_text({c.text, c.size, c.x, c.y, c.wrap}, record), 0) << c.text;
        EXPECT_EQ(lines, c.lines) << c.text;
    }
}

// The component keeps the glyphs it drew: a glyph asked for again at another
// size, or again at the first, must come out as it did the first time.
TEST(TextLines, GlyphsComeOutAlikeWhicheverSizeCameBefore) {
    const std::string row = "\xC4\xE3" "a";
    const auto draw = [&](int size) {
        std::vector<std::uint8_t> bits(0x200000);
        screen::FontBits out{.font_height = size};
        EXPECT_NE(screen::load_font_bits(row, size, bits, out), 0);
        bits.resize(static_cast<std::size_t>(out.bit_length));
        return bits;
    };
    const auto first16 = draw(16);
    const auto first24 = draw(24);
    ASSERT_EQ(first16.size(), 2u * 16 * 2);
    ASSERT_EQ(first24.size(), 2u * 24 * 3);
    // The full-width glyph's lower half has ink at both sizes.
    const auto inked = [](auto from, auto to) { return std::any_of(from, to, [](std::uint8_t b) { return b != 0; }); };
    EXPECT_TRUE(inked(first16.begin() + 16, first16.begin() + 32));
    EXPECT_TRUE(inked(first24.begin() + 36, first24.begin() + 72));
    EXPECT_EQ(draw(16), first16);
    EXPECT_EQ(draw(24), first24);
}

TEST(TextLines, AMissingFontComponentIsRefused) {
    int lines = 0;
    const auto count = [&](const screen::TextLine&) { return ++lines, 0; };
    EXPECT_EQ(screen::lay_out_text({"a", 16, 0, 0, true}, count, "NoSuchFont.dll"), -19);
    EXPECT_EQ(lines, 0);
}

TEST_F(Text, AFailedLineEndsTheDrawing) {
    fail_at = 1;
    EXPECT_EQ(ShowTextInScreen(handle, "a\\r\\nb", 16, "0,0,0", "255,255,255", 0, 0, 1, 7), -0x6A80);
    EXPECT_EQ(os.requests.size(), 2u);
    EXPECT_EQ(payloads()[0][20], 7);
}

}  // namespace
}  // namespace qz::test
