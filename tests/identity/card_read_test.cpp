#include <gtest/gtest.h>

#include <cstring>

#include "card_data.h"
#include "identity/card_read.h"
#include "link/link_state.h"
#include "qz_32.h"
#include "support/scripted_terminal.h"

namespace qz::test {
namespace {

constexpr char untouched = '\x7F';

class IdentityRead : public ::testing::Test {
protected:
    void SetUp() override {
        handle = os.open_hid_link();
        base.fill(untouched);
        finger.fill(untouched);
        answer(read_reply_data({.text = ordinary_card()}));
    }

    // Answers every request with status 0 and `data`, noting the time-outs in force.
    void answer(const Bytes& data) {
        os.respond = [this, data](const Bytes&) {
            seen_timeouts = {link::link_state().read_ms, link::link_state().write_gap_ms};
            return make_reply(0, data);
        };
    }

    std::pair<std::uint32_t, std::uint32_t> timeouts_left() const {
        return {link::link_state().read_ms, link::link_state().write_gap_ms};
    }

    std::string base_text() const { return std::string(base.data(), strnlen(base.data(), base.size())); }
    std::string finger_text() const { return std::string(finger.data(), strnlen(finger.data(), finger.size())); }

    ScriptedTerminal os;
    int handle = 0;
    std::array<char, 3200> base{};
    std::array<char, 2100> finger{};
    std::pair<std::uint32_t, std::uint32_t> seen_timeouts{};
};

TEST_F(IdentityRead, ModeZeroReadsTextWithTheModuleTimeouts) {
    EXPECT_EQ(IDReadCard(handle, 0, nullptr, base.data(), finger.data()), 0);
    ASSERT_EQ(os.requests.size(), 1u);
    EXPECT_EQ(os.requests[0], make_frame({0x32, 0x50, 0x00}));
    EXPECT_EQ(seen_timeouts, std::make_pair(4000u, 10u));
    EXPECT_EQ(timeouts_left(), std::make_pair(2000u, 2u));

    const std::string expected = ordinary_card_text();
    EXPECT_EQ(base_text(), expected);
    EXPECT_EQ(base[expected.size() + 1], untouched);
    EXPECT_EQ(finger[0], '\0');
    EXPECT_EQ(finger[1], untouched);
}

TEST_F(IdentityRead, FingerTextStopsAtItsArea) {
    answer(read_reply_data({.mode = 1, .text = ordinary_card(), .finger = Bytes(2500, 0xAB), .finger_length = 2500}));
    EXPECT_EQ(IDReadCard(handle, 1, nullptr, base.data(), finger.data()), 0);
    std::string expected;
    for (int i = 0; i < 1029; ++i) expected += "AB";
    EXPECT_EQ(finger_text(), expected);
    EXPECT_EQ(finger[2059], untouched);
}

TEST_F(IdentityRead, BadArgumentsSendNothing) {
    unsigned char data[8];
    int length = 0;
    EXPECT_EQ(IDReadCard(handle, 2, nullptr, base.data(), finger.data()), -19);
    EXPECT_EQ(IDReadCard(handle, 0, nullptr, nullptr, finger.data()), -19);
    EXPECT_EQ(IDReadCard(handle, 0, nullptr, base.data(), nullptr), -19);
    EXPECT_EQ(IDCardBaseMsg(handle, 2, &length, data), -19);
    EXPECT_EQ(IDCardBaseMsg(handle, 0, nullptr, data), -19);
    EXPECT_EQ(IDCardGetModeID(handle, nullptr, data), -19);
    EXPECT_TRUE(os.requests.empty());
    EXPECT_EQ(timeouts_left(), std::make_pair(5000u, 0u));
}

TEST_F(IdentityRead, ModuleStatusBytes) {
    struct Case {
        std::array<std::uint8_t, 3> status;
        int result;
        const char* message;
    };
    const std::vector<Case> cases{
        {{0x00, 0x00, 0x90}, 0, ""},
        {{0x00, 0x00, 0x80}, -50, "寻找卡片失败"},
        {{0x00, 0x00, 0x81}, -50, "选取卡片失败"},
        {{0x00, 0x00, 0x91}, -50, "卡片中此项无内容"},
        {{0xFF, 0xFF, 0x40}, -50, "无法识别的卡片类型"},
        {{0x01, 0x00, 0x90}, -50, "读二代证失败."},
    };
    for (const Case& c : cases) {
        const auto outcome = identity::module_status(c.status);
        EXPECT_EQ(outcome.result, c.result) << int(c.status[0]) << ' ' << int(c.status[1]) << ' ' << int(c.status[2]);
        EXPECT_EQ(outcome.message, gbk(c.message));

        answer(read_reply_data({.status = c.status, .text = ordinary_card()}));
        base.fill(untouched);
        EXPECT_EQ(IDReadCard(handle, 0, nullptr, base.data(), finger.data()), c.result);
        EXPECT_EQ(base[0] == untouched, c.result != 0);
        EXPECT_EQ(timeouts_left(), std::make_pair(2000u, 2u));
    }
}

TEST_F(IdentityRead, ReplyShorterThanTheStatusFails) {
    // The head of a good reply, cut before its third status byte (0x90).
    const Bytes good = read_reply_data({.text = ordinary_card()});
    for (std::size_t size : {0, 2, 4}) {
        answer(Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_EQ(IDReadCard(handle, 0, nullptr, base.data(), finger.data()), -50) << size;
    }
}

TEST_F(IdentityRead, LinkFailuresAreReturnedAndTimeoutsStillLeftBehind) {
    os.respond = [](const Bytes&) { return make_reply(0x6A82); };
    EXPECT_EQ(IDReadCard(handle, 0, nullptr, base.data(), finger.data()), -27266);
    EXPECT_EQ(timeouts_left(), std::make_pair(2000u, 2u));

    os.respond = [](const Bytes&) { return Bytes{}; };
    link::set_link_timeouts(5000, 0);
    int length = -5;
    unsigned char data[4] = {0x7F, 0x7F, 0x7F, 0x7F};
    EXPECT_EQ(IDCardBaseMsg(handle, 1, &length, data), -17);
    EXPECT_EQ(length, -5);
    EXPECT_EQ(data[0], 0x7F);
    EXPECT_EQ(timeouts_left(), std::make_pair(2000u, 2u));
    EXPECT_EQ(base[0], untouched);
}

TEST_F(IdentityRead, ReplyThatFillsTheReadAreaIsTakenALargerOneRefused) {
    Bytes largest = read_reply_data({.text = ordinary_card()});
    largest.resize(identity::read_reply_capacity, 0xEE);
    answer(largest);
    EXPECT_EQ(IDReadCard(handle, 0, nullptr, base.data(), finger.data()), 0);
    answer(Bytes(identity::read_reply_capacity + 1, 0x00));
    base.fill(untouched);
    EXPECT_EQ(IDReadCard(handle, 0, nullptr, base.data(), finger.data()), -38);
    EXPECT_EQ(base[0], untouched);
}

TEST_F(IdentityRead, PhotoPathOfMoreThan254CharactersIsRefusedAfterTheRead) {
    const std::string too_long = "/tmp/" + std::string(250, 'p');  // 255 characters
    EXPECT_EQ(IDReadCard(handle, 0, too_long.c_str(), base.data(), finger.data()), -1);
    EXPECT_EQ(os.requests.size(), 1u);
    EXPECT_EQ(base[0], untouched);
    EXPECT_EQ(finger[0], untouched);

    identity::CardTexts texts;
    const auto outcome = identity::IDCardDecodeMsg(0, read_reply_data({.text = ordinary_card()}), too_long.c_str(), texts);
    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.message, gbk("照片全路径设置非法"));
}

TEST_F(IdentityRead, BaseMessageIsTheWholeReply) {
    const Bytes reply = read_reply_data({.mode = 1, .text = ordinary_card(), .photo = {1, 2, 3}, .finger = {4, 5}});
    answer(reply);
    std::array<unsigned char, 3200> data;
    data.fill(0x7F);
    int length = 0;
    EXPECT_EQ(IDCardBaseMsg(handle, 1, &length, data.data()), 0);
    EXPECT_EQ(os.requests.at(0), make_frame({0xD0, 0x07, 0x00}));
    EXPECT_EQ(seen_timeouts, std::make_pair(4000u, 10u));
    EXPECT_EQ(timeouts_left(), std::make_pair(2000u, 2u));
    ASSERT_EQ(length, static_cast<int>(reply.size()));
    EXPECT_TRUE(std::equal(reply.begin(), reply.end(), data.begin()));
    EXPECT_EQ(data[reply.size()], 0x7F);

    answer(read_reply_data({.status = {0, 0, 0x80}}));
    length = -5;
    data.fill(0x7F);
    EXPECT_EQ(IDCardBaseMsg(handle, 0, &length, data.data()), -50);
    EXPECT_EQ(os.requests.at(1), make_frame({0x32, 0x50, 0x00}));
    EXPECT_EQ(length, -5);
    EXPECT_EQ(data[0], 0x7F);
}

TEST_F(IdentityRead, ModuleIdentifierWithTimeoutsSetOnlyAfterwards) {
    link::set_link_timeouts(3000, 7);
    answer({'S', 'A', 'M', 'V', '1'});
    unsigned char length = 0;
    std::array<unsigned char, 300> id;
    id.fill(0x7F);
    EXPECT_EQ(IDCardGetModeID(handle, &length, id.data()), 0);
    EXPECT_EQ(os.requests.at(0), make_frame({0x32, 0x51}));
    EXPECT_EQ(seen_timeouts, std::make_pair(3000u, 7u));
    EXPECT_EQ(timeouts_left(), std::make_pair(2000u, 10u));
    EXPECT_EQ(length, 5);
    EXPECT_EQ(std::string(id.begin(), id.begin() + 5), "SAMV1");
    EXPECT_EQ(id[5], 0x7F);

    // A status of the module's own is not looked at; a failure of the link is returned.
    answer(Bytes(255, 0x80));
    EXPECT_EQ(IDCardGetModeID(handle, &length, id.data()), 0);
    EXPECT_EQ(length, 255);
    answer(Bytes(256, 0x80));
    length = 9;
    id.fill(0x7F);
    EXPECT_EQ(IDCardGetModeID(handle, &length, id.data()), -38);
    EXPECT_EQ(length, 9);
    EXPECT_EQ(id[0], 0x7F);
    os.respond = [](const Bytes&) { return make_reply(0x0005); };
    link::set_link_timeouts(5000, 0);
    EXPECT_EQ(IDCardGetModeID(handle, &length, id.data()), -5);
    EXPECT_EQ(timeouts_left(), std::make_pair(2000u, 10u));
}

}  // namespace
}  // namespace qz::test
