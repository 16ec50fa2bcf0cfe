// The library's drawing against the simulated screen: what lands in its frame buffer.
#include <vector>

#include "image_files.h"
#include "screen/font_component.h"
#include "screen/lcd_fonts.h"
#include "sim/models/lcd/lcd_model.h"
#include "screen/screen_commands.h"
#include "simulated_screen.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

using screen::Instruction;

TEST_F(SimulatedScreen, FillClearAndRectangle) {
    ASSERT_EQ(SetFullScreenColor(icdev, "0,0,255"), 0);
    EXPECT_EQ(pixel(0, 0), 0xF800);
    EXPECT_EQ(pixel(799, 479), 0xF800);
    ASSERT_EQ(screen::clear_screen_rect(icdev, 0, 10, 20, 4, 2), 0);
    EXPECT_EQ(pixel(10, 20), 0xFFFF);
    EXPECT_EQ(pixel(13, 21), 0xFFFF);
    EXPECT_EQ(pixel(14, 21), 0xF800);
    EXPECT_EQ(pixel(13, 22), 0xF800);
    ASSERT_EQ(ClearFullScreen(icdev), 0);
    EXPECT_EQ(pixel(799, 479), 0xFFFF);
}

TEST_F(SimulatedScreen, SleepTimeAndVendor) {
    ASSERT_EQ(SetAutoSleepTime(icdev, 300), 0);
    EXPECT_EQ(screen().sleep_time(), 300);
    ASSERT_EQ(SetScreenVendor(icdev, 'K'), 0);
    char vendor[4] = {};
    ASSERT_EQ(GetScreenVendor(icdev, vendor), 0);
    EXPECT_STREQ(vendor, "K");
}

// A full-screen picture of one colour word per row, stored in `page`.
std::vector<std::uint8_t> striped_screen() {
    std::vector<std::uint8_t> words;
    for (int y = 0; y < 480; ++y)
        for (int x = 0; x < 800; ++x) words.insert(words.end(), {static_cast<std::uint8_t>(y >> 8), static_cast<std::uint8_t>(y)});
    return words;
}

TEST_F(SimulatedScreen, PagesKeepPicturesUntilShown) {
    const auto words = striped_screen();
    auto first = screen::picture_first_command(Instruction::store_page_first, {0, 0, 800, 480, 768000});
    first.add(3);
    ASSERT_EQ(screen::send_transfer(icdev, first, Instruction::store_page_data, words, true), 0);
    EXPECT_EQ(pixel(0, 479), 0xFFFF);
    ASSERT_EQ(ActiveShowPic(icdev, 3), 0);
    EXPECT_EQ(screen().shown_page(), 3u);
    EXPECT_EQ(pixel(0, 479), 479);
    EXPECT_EQ(pixel(799, 1), 1);
}

TEST_F(SimulatedScreen, RefusesBlocksOutsideATransfer) {
    const std::vector<std::uint8_t> block(8, 0);
    EXPECT_EQ(screen::send_screen_blocks(icdev, Instruction::picture_data, block, false), -0x6985);
    const auto first = screen::picture_first_command(Instruction::picture_first, {0, 0, 2, 1, 4});
    EXPECT_EQ(screen::send_transfer(icdev, first, Instruction::picture_data, block, false), -0x6985);
    const auto off_screen = screen::picture_first_command(Instruction::picture_first, {798, 0, 4, 1, 8});
    EXPECT_EQ(screen::send_transfer(icdev, off_screen, Instruction::picture_data, block, false), -0x6B00);
}

TEST_F(SimulatedScreen, TextIsPaintedFromTheGlyphBits) {
    ASSERT_EQ(SetFullScreenColor(icdev, "0,255,0"), 0);
    const std::string row = "\xC4\xE3\xBA\xC3, world";  // two full-width glyphs, seven half-width
    ASSERT_EQ(ShowTextInScreen(icdev, row.c_str(), 24, "0,0,0", "255,255,0", 9, 11, 1, 0), 0);

    std::vector<std::uint8_t> bits(0x200000);
    screen::FontBits rendered{.font_height = 24};
    ASSERT_NE(screen::load_font_bits(row, 24, bits, rendered), 0);
    const std::vector<int> widths{24, 24, 12, 12, 12, 12, 12, 12, 12};
    int left = 10, ink = 0;
    for (std::size_t glyph = 0; glyph < widths.size(); left += widths[glyph++])
        for (int r = 0; r < 24; ++r)
            for (int c = 0; c < widths[glyph]; ++c) {
                const bool set = (bits[glyph * 72 + static_cast<std::size_t>(r) * 3 + c / 8] >> (7 - c % 8)) & 1;
                ink += set;
                ASSERT_EQ(pixel(left + c, 12 + r), set ? 0x0000 : 0x07FF) << glyph << " " << r << " " << c;
            }
    EXPECT_GT(ink, 100);
    EXPECT_EQ(pixel(left, 12), 0x07E0);
    EXPECT_EQ(pixel(10, 36), 0x07E0);
}

TEST_F(SimulatedScreen, PicturesAndMonochromeLandWhereTheyShould) {
    TempDir folder;
    const std::string path = (folder.path() / "p.bmp").string();
    const std::vector<Rgb> colours{{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255},
                                   {0, 0, 0},   {8, 4, 8},   {255, 0, 255}, {0, 255, 255}};
    write_image(path, ImageFormat::bmp, 4, 2, [&](int x, int y) { return colours[static_cast<std::size_t>(y * 4 + x)]; });
    ASSERT_EQ(SetFullScreenColor(icdev, "0,0,0"), 0);
    ASSERT_EQ(ShowPicInScreen(icdev, path.c_str(), 1, 3, 0, 0), 0);
    const std::vector<std::uint16_t> words{0x001F, 0x07E0, 0xF800, 0xFFFF, 0x0000, 0x0821, 0xF81F, 0xFFE0};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_EQ(pixel(2 + x, 4 + y), words[static_cast<std::size_t>(y * 4 + x)]);
    EXPECT_EQ(pixel(6, 4), 0x0000);

    // The black box of a 3 x 2 picture: black stays black, the rest turns white.
    write_image(path, ImageFormat::bmp, 3, 2, [](int x, int y) { return x == 1 && y == 1 ? Rgb{200, 200, 200} : Rgb{}; });
    ASSERT_EQ(SetFullScreenColor(icdev, "0,0,255"), 0);
    ASSERT_EQ(ShowMonochromeInScreen(icdev, path.c_str(), 0, 0, 0, 0), 0);
    EXPECT_EQ(pixel(0, 1), 0x0000);
    EXPECT_EQ(pixel(1, 1), 0xFFFF);
    EXPECT_EQ(pixel(3, 0), 0xF800);
}

TEST_F(SimulatedScreen, LcdCellsShowTheTableGlyphs) {
    auto& lcd = sim.model<sim::LcdModel>();
    const unsigned char text[] = "A\xB0\xA1";
    ASSERT_EQ(lcd_display_string(icdev, 2, 3, 3, text), 0);
    ASSERT_EQ(lcd_display_new(icdev, 0, 0, 3, text), 0);
    // Each glyph row of the tables, at its cell on line 2 and again on line 0.
    for (const int line : {2, 0}) {
        const int left = line == 2 ? 24 : 0;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 24; ++x) {
                const bool ink = x < 8 ? (screen::lcd_font_8x16['A' * 16 + y] >> (7 - x)) & 1
                                       : (screen::lcd_font_16x16[15 * 94 * 32 + y * 2 + (x - 8) / 8] >> (7 - x % 8)) & 1;
                ASSERT_EQ(lcd.lit(left + x, line * 16 + y), ink) << line << " " << x << " " << y;
            }
    }
    EXPECT_FALSE(lcd.lit(48, 32));
    ASSERT_EQ(adjusts_Brightness(icdev, 1), 0);
    EXPECT_EQ(lcd.brightness(), 1);
    ASSERT_EQ(lcd_clear(icdev), 0);
    EXPECT_EQ(lcd.as_text().find('#'), std::string::npos);
}

}  // namespace
}  // namespace qz::test
