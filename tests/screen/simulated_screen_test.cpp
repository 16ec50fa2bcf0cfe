// The library's drawing against the simulated screen: what lands in its frame buffer.
#include <vector>

#include "image_files.h"
#include "screen/font_component.h"
#include "screen/screen_commands.h"
#include "simulated_screen.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

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

}  // namespace
}  // namespace qz::test
