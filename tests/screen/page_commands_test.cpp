#include <functional>
#include <optional>

#include "qz_32.h"
#include "screen/colour.h"
#include "screen/screen_commands.h"
#include "screen_fixture.h"

namespace qz::test {
namespace {

TEST(ColourString, ParsesToTheWordOrRefuses) {
    const std::vector<std::pair<const char*, std::optional<std::uint16_t>>> cases{
        {"0,0,0", 0x0000},     {"255,255,255", 0xFFFF}, {"255,0,0", 0x001F},  {"0,255,0", 0x07E0},
        {"0,0,255", 0xF800},   {"1,,8,,,8", 0x0840},    {" +8, 4x,16", 0x1021}, {"a,b,c", 0x0000},
        {"256,0,0", {}},       {"-1,0,0", {}},          {"1,2", {}},          {"1,2,3,4", {}},
        {"", {}},              {"100,100,100,100", {}}, {nullptr, {}},        {"0000000,0000000,0", {}},
    };
    for (const auto& [text, word] : cases) EXPECT_EQ(screen::parse_color_string(text), word) << (text ? text : "null");
}

using ScreenCommands = ScreenTest;

TEST_F(ScreenCommands, PayloadsOfTheSingleCommands) {
    const std::vector<std::pair<std::function<int()>, Bytes>> cases{
        {[&] { return SetFullScreenColor(handle, "255,0,0"); }, {0xCD, 0x01, 0x00, 0x00, 0x1F}},
        {[&] { return ClearFullScreen(handle); }, {0xCD, 0x04, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x00}},
        {[&] { return ActiveShowPic(handle, 4); }, {0xCD, 0x06, 0x00, 0x04}},
        {[&] { return SetAutoSleepTime(handle, 65535); }, {0xCD, 0x30, 0x00, 0xFF, 0xFF}},
        {[&] { return SetAutoSleepTime(handle, 0x0102); }, {0xCD, 0x30, 0x00, 0x01, 0x02}},
        {[&] { return SetScreenVendor(handle, 0xA5); }, {0xCD, 0x31, 0x00, 0x01, 0xA5}},
        {[&] { return screen::clear_screen_rect(handle, 3, 1, 3, 5, 7); },
         {0xCD, 0x05, 0x00, 0, 2, 0, 4, 0, 6, 0, 8, 0xFF, 0xFF, 3}},
    };
    for (const auto& [call, payload] : cases) {
        ASSERT_EQ(call(), 0);
        EXPECT_EQ(payloads().back(), payload);
    }
}

TEST_F(ScreenCommands, BadArgumentsSendNothingAndLeaveTheTimeouts) {
    link::set_link_timeouts(1234, 7);
    for (const int result :
         {SetFullScreenColor(handle, "1,2"), SetFullScreenColor(handle, nullptr), ActiveShowPic(handle, 5),
          ActiveShowPic(handle, -1), SetAutoSleepTime(handle, 65536), SetAutoSleepTime(handle, -1),
          GetScreenVendor(handle, nullptr), screen::clear_screen_rect(handle, 4, 0, 0, 2, 2),
          screen::clear_screen_rect(handle, 0, 799, 0, 2, 2), screen::clear_screen_rect(handle, 0, 0, 479, 0, 2),
          screen::clear_screen_rect(handle, 0, 0, 0, -2, 2)})
        EXPECT_EQ(result, -19);
    EXPECT_TRUE(os.requests.empty());
    EXPECT_EQ(link::link_state().read_ms, 1234u);
}

TEST_F(ScreenCommands, ActivatingAPageLeavesTwoSecondsWhateverTheStatus) {
    fail_at = 0;
    EXPECT_EQ(ActiveShowPic(handle, 0), -0x6A80);
    EXPECT_EQ(read_ms, (std::vector<std::uint32_t>{4000}));
    EXPECT_EQ(link::link_state().read_ms, 2000u);
    EXPECT_EQ(link::link_state().write_gap_ms, 0u);
}

TEST_F(ScreenCommands, VendorIsTheReplyAsTextAndEmptyAfterAFailure) {
    char vendor[8] = "xxxxxxx";
    reply_data = {'Q', '7'};
    ASSERT_EQ(GetScreenVendor(handle, vendor), 0);
    EXPECT_EQ(payloads().back(), (Bytes{0xCD, 0x31, 0x00, 0x00}));
    EXPECT_STREQ(vendor, "Q7");
    fail_at = 1;
    EXPECT_EQ(GetScreenVendor(handle, vendor), -0x6A80);
    EXPECT_STREQ(vendor, "");
}

struct BlockCase {
    std::size_t length;
    bool paced;
    std::vector<std::size_t> block_sizes;
    std::vector<std::uint32_t> read_ms;
};

TEST_F(ScreenCommands, BlocksAndTheirPacing) {
    const std::vector<BlockCase> cases{
        {0, true, {}, {}},
        {4096, true, {4096}, {15000}},
        {4097, true, {4096, 1}, {2000, 15000}},
        {768000, false, std::vector<std::size_t>(187, 4096), std::vector<std::uint32_t>(188, 5000)},
    };
    for (const BlockCase& c : cases) {
        os.requests.clear();
        read_ms.clear();
        link::set_link_timeouts(5000, 0);
        Bytes content(c.length);
        for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<std::uint8_t>(i * 7);
        ASSERT_EQ(screen::send_screen_blocks(handle, screen::Instruction::picture_data, content, c.paced), 0);
        Bytes carried;
        std::vector<std::size_t> sizes;
        for (const Bytes& payload : payloads()) {
            ASSERT_EQ(Bytes(payload.begin(), payload.begin() + 3), (Bytes{0xCD, 0x23, 0x00}));
            sizes.push_back(payload.size() - 3);
            carried.insert(carried.end(), payload.begin() + 3, payload.end());
        }
        auto expected_sizes = c.block_sizes;
        if (c.length == 768000) expected_sizes.push_back(2048);
        EXPECT_EQ(sizes, expected_sizes) << c.length;
        EXPECT_TRUE(carried == content) << c.length;
        EXPECT_EQ(read_ms, c.read_ms) << c.length;
        EXPECT_EQ(link::link_state().read_ms, c.paced && c.length > 0 ? 2000u : 5000u);
    }
}

TEST_F(ScreenCommands, AFailedBlockEndsTheTransferAndRestoresTheTimeouts) {
    fail_at = 1;
    const Bytes content(3 * 4096);
    EXPECT_EQ(screen::send_screen_blocks(handle, screen::Instruction::monochrome_data, content, true), -0x6A80);
    EXPECT_EQ(os.requests.size(), 2u);
    EXPECT_EQ(link::link_state().read_ms, 2000u);
}

}  // namespace
}  // namespace qz::test
