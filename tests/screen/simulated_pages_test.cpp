// Page commands and raw transfers against the simulated screen.
#include <vector>

#include "screen/screen_commands.h"
#include "simulated_screen.h"

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

}  // namespace
}  // namespace qz::test
