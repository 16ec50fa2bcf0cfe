// The line LCD: checks, payloads, and the turning of glyph rows into cells.
#include "qz_32.h"
#include "screen/lcd_cells.h"
#include "screen/lcd_fonts.h"
#include "screen_fixture.h"

namespace qz::test {
namespace {

using Lcd = ScreenTest;

TEST_F(Lcd, PayloadSizesFollowTheBytesTaken) {
    const unsigned char a[] = "A", pair[] = "\xB0\xA1", cut[] = "\xB0\xA1", fifteen[] = "ABCDEFGHIJKLMNO";
    struct Case {
        std::function<int()> call;
        Bytes head;
        std::size_t size;
    };
    const std::vector<Case> cases{
        {[&] { return lcd_display_string(handle, 3, 14, 0, a); }, {0x00, 0x0C, 0x00, 0x00, 3, 14}, 6},
        {[&] { return lcd_display_string(handle, 1, 2, 1, a); }, {0x00, 0x0C, 0x00, 0x00, 1, 2}, 22},
        {[&] { return lcd_display_string(handle, 0, 0, 2, pair); }, {0x00, 0x0C, 0x00, 0x00, 0, 0}, 38},
        {[&] { return lcd_display_string2(handle, 0, 15, 1, cut); }, {0x00, 0x0C, 0x00, 0x00, 0, 15}, 38},
        {[&] { return lcd_display_new(handle, 2, 15, 1, cut); }, {0x00, 0x10, 0x00, 0x00, 2, 15, 0xB0, 0xA1}, 8},
        {[&] { return lcd_display_new(handle, 2, 1, 15, fifteen); }, {0x00, 0x10, 0x00, 0x00, 2, 1}, 21},
        {[&] { return lcd_clear(handle); }, {0x00, 0x0D, 0x00}, 3},
        {[&] { return adjusts_Brightness(handle, 1); }, {0x00, 0x11, 0x00, 0x01}, 4},
        {[&] { return backlight_Delay(handle, 0xFE); }, {0x00, 0x12, 0x00, 0xFE}, 4},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        ASSERT_EQ(cases[i].call(), 0) << i;
        const Bytes payload = payloads().back();
        EXPECT_EQ(payload.size(), cases[i].size) << i;
        EXPECT_EQ(Bytes(payload.begin(), payload.begin() + static_cast<std::ptrdiff_t>(cases[i].head.size())), cases[i].head) << i;
    }
}

TEST_F(Lcd, ChecksRefuseBeforeSending) {
    const unsigned char text[17] = "ABCDEFGHIJKLMNOP";
    for (const int result : {lcd_display_string(handle, 0, 15, 1, text), lcd_display_string(handle, 4, 0, 1, text),
                             lcd_display_string(handle, 0, 1, 16, text), lcd_display_string2(handle, 0, 1, 16, text),
                             lcd_display_new(handle, 0, 1, 16, text), lcd_display_new(handle, -1, 0, 1, text),
                             lcd_display_new(handle, 0, 0, -1, text), lcd_display_string2(handle, 0, 16, 0, text),
                             lcd_display_string(handle, 0, 0, 1, nullptr), adjusts_Brightness(handle, 2)})
        EXPECT_EQ(result, -19);
    EXPECT_TRUE(os.requests.empty());
    EXPECT_EQ(lcd_display_string(handle, 0, 1, 15, text), 0);
}

TEST(LcdCells, RowsBecomeColumns) {
    std::array<std::uint8_t, 16> entry{};
    entry[0] = 0x80;   // row 0, column 0: bit 7 of byte 0
    entry[7] = 0x01;   // row 7, column 7: bit 0 of byte 7
    entry[15] = 0x80;  // row 15, column 0: bit 0 of byte 8
    entry[9] = 0x20;   // row 9, column 2: bit 6 of byte 10
    std::array<std::uint8_t, 16> cell{};
    cell[0] = 0x80, cell[7] = 0x01, cell[8] = 0x01, cell[10] = 0x40;
    EXPECT_EQ(screen::lcd_transpose_8x16(entry), cell);

    std::array<std::uint8_t, 32> wide{};
    wide[0] = 0x80;       // top left block
    wide[2 * 8] = 0x40;   // bottom left: row 8, column 1
    wide[1] = 0x01;       // top right: row 0, column 15
    wide[31] = 0x01;      // bottom right: row 15, column 15
    std::array<std::uint8_t, 32> cells{};
    cells[0] = 0x80, cells[9] = 0x80, cells[16 + 7] = 0x80, cells[16 + 15] = 0x01;
    EXPECT_EQ(screen::lcd_transpose_16x16(wide), cells);
}

TEST(LcdCells, TablesAndLookups) {
    // The first pair (A1 A1) is entry 0, B0 A1 is entry (0x0F * 94); pairs before or past the table are blank.
    const auto entry = [](std::size_t n) { return std::span(screen::lcd_font_16x16).subspan(n * 32).first<32>(); };
    EXPECT_EQ(screen::lcd_glyph_pair(0xB0, 0xA1), screen::lcd_transpose_16x16(entry(15 * 94)));
    EXPECT_NE(screen::lcd_glyph_pair(0xB0, 0xA1), (std::array<std::uint8_t, 32>{}));
    EXPECT_EQ(screen::lcd_glyph_pair(0xFF, 0xFF), (std::array<std::uint8_t, 32>{}));
    EXPECT_EQ(screen::lcd_glyph_pair(0xA1, 0xA0), (std::array<std::uint8_t, 32>{}));
    EXPECT_NE(screen::lcd_glyph_byte('A'), (std::array<std::uint8_t, 16>{}));
    EXPECT_EQ(screen::lcd_glyph_byte(' '), (std::array<std::uint8_t, 16>{}));
}

}  // namespace
}  // namespace qz::test
