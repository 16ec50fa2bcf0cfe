#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "card_fixture.h"
#include "link/link_state.h"
#include "qz_32.h"

namespace qz::test {
namespace {

using Contactless = CardTest;

// An activation reply: a byte not passed on, the UID and the answer to select, each behind its length.
Bytes activation_reply(const Bytes& uid, const Bytes& ats) {
    return concat({{0x5A, static_cast<std::uint8_t>(uid.size())}, uid, {static_cast<std::uint8_t>(ats.size())}, ats});
}

const Bytes uid{0xA1, 0xB2, 0xC3, 0xD4};
const Bytes ats{0x05, 0x78, 0x80, 0x70, 0x02};

TEST_F(Contactless, OpenCardSendsModeAndHandsOverBytesOrHex) {
    for (std::uint8_t mode : {0, 1}) {
        os.requests.clear();
        answer({activation_reply(uid, ats), activation_reply(uid, ats)});

        std::array<std::uint8_t, 16> uid_out{};
        std::array<std::uint8_t, 16> ats_out{};
        unsigned char length = 0xEE;
        ASSERT_EQ(OpenCard(icdev, mode, uid_out.data(), ats_out.data(), &length), 0);
        EXPECT_EQ(Bytes(uid_out.begin(), uid_out.begin() + 4), uid);
        EXPECT_EQ(uid_out[4], 0);
        EXPECT_EQ(length, 5);
        EXPECT_EQ(Bytes(ats_out.begin(), ats_out.begin() + 5), ats);

        std::array<char, 32> uid_text{};
        std::array<char, 32> ats_text{};
        uid_text.fill('x');
        ASSERT_EQ(OpenCard_hex(icdev, mode, uid_text.data(), ats_text.data(), &length), 0);
        EXPECT_STREQ(uid_text.data(), "A1B2C3D4");
        EXPECT_STREQ(ats_text.data(), "0578807002");
        EXPECT_EQ(length, 10);

        EXPECT_EQ(payloads(), (std::vector<Bytes>{{0xC1, 0x30, 0x00, mode}, {0xC1, 0x30, 0x00, mode}}));
    }
}

TEST_F(Contactless, ModeAboveOneIsRefusedBeforeAnything) {
    std::array<std::uint8_t, 16> out{};
    unsigned char length = 0xEE;
    EXPECT_EQ(OpenCard(icdev, 2, out.data(), out.data(), &length), -19);
    EXPECT_EQ(length, 0xEE);  // cleared only behind the mode check
    EXPECT_EQ(OpenCard_hex(icdev, 2, reinterpret_cast<char*>(out.data()), reinterpret_cast<char*>(out.data()), &length),
              -19);
    EXPECT_EQ(Open_Card(icdev, 2, out.data()), -19);
    EXPECT_EQ(OpenCard(icdev, 0, nullptr, out.data(), &length), -19);
    EXPECT_TRUE(os.requests.empty());
}

TEST_F(Contactless, FailedActivationLeavesLengthZeroAndOutputsAlone) {
    replies.push_back(make_reply(0x0005));
    std::array<std::uint8_t, 8> out{};
    out.fill(0x77);
    unsigned char length = 0xEE;
    EXPECT_EQ(OpenCard(icdev, 0, out.data(), out.data(), &length), -5);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(out[0], 0x77);
}

// Replies whose UID or answer runs past their end, or an answer too long for the
// form's one-byte length, are refused without touching the outputs.
TEST_F(Contactless, InconsistentOrOversizedAnswersAreRefused) {
    struct Case {
        Bytes reply;
        bool hex;
        int result;
    };
    const Bytes ats127(127, 0x11);
    const Bytes ats128(128, 0x11);
    const Case cases[] = {
        {{0x00}, false, -38},
        {{0x00, 0x04, 0x01, 0x02, 0x03}, false, -38},             // UID cut short
        {{0x00, 0x02, 0x01, 0x02}, false, -38},                   // no answer length
        {{0x00, 0x01, 0x01, 0x03, 0x10, 0x20}, false, -38},       // answer cut short
        {activation_reply(uid, Bytes(255, 0x22)), false, 0},     // the longest answer
        {activation_reply(uid, ats127), true, 0},                 // 254 characters
        {activation_reply(uid, ats128), true, -38},               // 256 would not fit the length
    };
    for (const Case& c : cases) {
        replies.push_back(make_reply(0, c.reply));
        std::array<char, 600> uid_out{};
        std::array<char, 600> ats_out{};
        ats_out[0] = 'q';
        unsigned char length = 0xEE;
        const int result = c.hex ? OpenCard_hex(icdev, 0, uid_out.data(), ats_out.data(), &length)
                                 : OpenCard(icdev, 0, reinterpret_cast<unsigned char*>(uid_out.data()),
                                            reinterpret_cast<unsigned char*>(ats_out.data()), &length);
        EXPECT_EQ(result, c.result) << c.reply.size();
        if (result != 0) {
            EXPECT_EQ(length, 0);
            EXPECT_EQ(ats_out[0], 'q');
        }
    }
}

TEST_F(Contactless, OpenCardKeepsTheAnswerForResetCard) {
    std::array<std::uint8_t, 100> out{};
    unsigned char length = 0xEE;
    EXPECT_EQ(Reset_Card(icdev, out.data(), &length), -53);  // nothing kept since load
    EXPECT_EQ(Reset_Card(-5, out.data(), &length), -53);
    EXPECT_EQ(length, 0xEE);

    link::set_link_timeouts(5000, 7);
    answer({activation_reply(uid, ats)});
    std::array<std::uint8_t, 16> uid_out{};
    ASSERT_EQ(Open_Card(icdev, 1, uid_out.data()), 0);
    EXPECT_EQ(Bytes(uid_out.begin(), uid_out.begin() + 4), uid);
    EXPECT_EQ(link::link_state().read_ms, 1000u);  // left behind on purpose
    EXPECT_EQ(link::link_state().write_gap_ms, 0u);

    os.requests.clear();
    ASSERT_EQ(Reset_Card(icdev, out.data(), &length), 0);
    EXPECT_EQ(length, 5);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 5), ats);
    EXPECT_TRUE(os.requests.empty());

    // A later Open_Card that fails empties the answer but keeps it valid.
    replies.push_back(make_reply(0x6A82));
    EXPECT_EQ(Open_Card(icdev, 0, uid_out.data()), -27266);
    ASSERT_EQ(Reset_Card(icdev, out.data(), &length), 0);
    EXPECT_EQ(length, 0);
}

TEST_F(Contactless, OpenCardRefusesAnAnswerOverOneHundredBytes) {
    std::array<std::uint8_t, 16> uid_out{};
    answer({activation_reply(uid, Bytes(101, 0x33))});
    EXPECT_EQ(Open_Card(icdev, 0, uid_out.data()), -38);
    std::array<std::uint8_t, 100> out{};
    unsigned char length = 0;
    EXPECT_EQ(Reset_Card(icdev, out.data(), &length), -53);

    answer({activation_reply(uid, Bytes(100, 0x33))});
    ASSERT_EQ(Open_Card(icdev, 0, uid_out.data()), 0);
    ASSERT_EQ(Reset_Card(icdev, out.data(), &length), 0);
    EXPECT_EQ(length, 100);
    EXPECT_EQ(out[99], 0x33);
}

TEST_F(Contactless, CloseCardDeactivatesTheField) {
    EXPECT_EQ(CloseCard(icdev), 0);
    replies.push_back(make_reply(0x0102));
    EXPECT_EQ(CloseCard(icdev), -258);
    EXPECT_EQ(payloads(), (std::vector<Bytes>{{0xC1, 0x32, 0x00}, {0xC1, 0x32, 0x00}}));
    EXPECT_EQ(CloseCard(0), -33);
}

}  // namespace
}  // namespace qz::test
