#include <algorithm>
#include <array>
#include <functional>
#include <set>

#include "pin_fixture.h"
#include "pinpad/keypad_table.h"
#include "qz_32.h"
#include "sim/models/pinpad/des_cipher.h"
#include "sim/models/pinpad/keypad_key_table.h"

namespace qz::test {
namespace {

using sim::DesBlock;

class Keypad : public PinTest {
protected:
    // Answers a protected entry as the terminal must: the session key recovered from
    // the row number and the wrapped key, `plain` enciphered under it block by block
    // (a last partial block is sent as the front of its cipher block).
    void answer_protected(const Bytes& plain) {
        os.respond = [this, plain](const Bytes& frame) {
            const Bytes payload = payload_of(frame);
            session_key = recover_session_key(payload);
            Bytes cipher = plain;
            cipher.resize((plain.size() + 7) / 8 * 8, 0x00);
            sim::encipher_blocks(cipher, session_key);
            cipher.resize(plain.size());
            return make_reply(0, cipher);
        };
    }

    static DesBlock recover_session_key(const Bytes& payload) {
        DesBlock wrapped{};
        std::copy_n(payload.begin() + 8, 8, wrapped.begin());
        return sim::des_decrypt(wrapped, sim::keypad_key_table().at(payload.at(7)));
    }

    DesBlock session_key{};
    std::array<unsigned char, 300> rdata{};
    unsigned char rlen = 0xEE;
};

TEST_F(Keypad, ExchangeSendsModeTimeoutAndCommandAndCopiesTheWholeReply) {
    answer_with({0x31, 0x32, 0x33});
    const unsigned char command[] = {0x1B, 0x58, 0x7F};
    ASSERT_EQ(dev_pwdkb(icdev, 7, 0x21, 3, command, &rlen, rdata.data()), 0);
    EXPECT_EQ(last_payload(), (Bytes{0x00, 0x08, 0x00, 0x21, 0x07, 0x1B, 0x58, 0x7F}));
    EXPECT_EQ(rlen, 3);
    EXPECT_EQ(Bytes(rdata.begin(), rdata.begin() + 3), (Bytes{0x31, 0x32, 0x33}));
}

TEST_F(Keypad, ReplyOfThreeHundredBytesFitsAndLongerIsRefused) {
    answer_with(Bytes(300, 0x5A));
    ASSERT_EQ(dev_pwdkb_getpwd(icdev, 0, &rlen, rdata.data()), 0);
    EXPECT_EQ(rlen, 300 & 0xFF) << "the low byte of the length";
    EXPECT_EQ(rdata[299], 0x5A);

    answer_with(Bytes(301, 0x5A));
    rlen = 0xEE;
    EXPECT_EQ(dev_pwdkb_getpwd(icdev, 0, &rlen, rdata.data()), -38);
    EXPECT_EQ(rlen, 0);
}

TEST_F(Keypad, LinkWaitsForTheTimeoutOnlyAboveFiveSecondsAndFiveSecondsAfterwards) {
    struct Case {
        unsigned char timeout;
        std::uint32_t wait_ms;
    };
    constexpr std::uint32_t before = 1234;
    for (const Case c : {Case{0, before}, Case{4, before}, Case{5, 6000}, Case{255, 256000}}) {
        link::set_link_timeouts(before, 7);
        std::uint32_t seen = 0;
        os.respond = [&](const Bytes&) {
            seen = read_ms();
            return make_reply(0, {0x31});
        };
        ASSERT_EQ(dev_pwdkb_getpwd(icdev, c.timeout, &rlen, rdata.data()), 0);
        EXPECT_EQ(seen, c.wait_ms) << "timeout " << int{c.timeout};
        EXPECT_EQ(read_ms(), 5000u);
        EXPECT_EQ(link::link_state().write_gap_ms, 0u);
        EXPECT_EQ(last_payload().at(4), c.timeout);
    }
}

TEST_F(Keypad, FailureLeavesLengthZeroAndDataAloneAndRestoresTheWait) {
    link::set_link_timeouts(31000, 0);
    os.respond = [](const Bytes&) { return make_reply(0x6400); };
    rdata.fill(0xEE);
    EXPECT_EQ(dev_pwdkb_getpwd_again(icdev, 30, &rlen, rdata.data()), -0x6400);
    EXPECT_EQ(rlen, 0);
    EXPECT_EQ(rdata[0], 0xEE);
    EXPECT_EQ(read_ms(), 5000u);

    rlen = 0xEE;
    EXPECT_EQ(dev_pwdkb_getpwd_encrypt(icdev, 30, &rlen, rdata.data()), -0x6400);
    EXPECT_EQ(rlen, 0);
    EXPECT_EQ(rdata[0], 0xEE);
}

TEST_F(Keypad, ClearEntriesSendEscapeAndTheirLetterInModeZero) {
    using Entry = std::function<int(unsigned char*, unsigned char*)>;
    const std::vector<std::pair<Entry, std::uint8_t>> cases{
        {[&](unsigned char* l, unsigned char* d) { return dev_pwdkb_getpwd(icdev, 9, l, d); }, 'I'},
        {[&](unsigned char* l, unsigned char* d) { return dev_pwdkb_getpwd_again(icdev, 9, l, d); }, 'E'},
    };
    answer_with({'1', '2', '3', '4'});
    for (const auto& [entry, letter] : cases) {
        ASSERT_EQ(entry(&rlen, rdata.data()), 0);
        EXPECT_EQ(last_payload(), (Bytes{0x00, 0x08, 0x00, 0x00, 0x09, 0x1B, letter}));
        EXPECT_EQ(rlen, 4);
        EXPECT_EQ(Bytes(rdata.begin(), rdata.begin() + 4), (Bytes{'1', '2', '3', '4'}));
    }
}

TEST_F(Keypad, NullPointersAreRefusedBeforeAnythingIsSent) {
    const unsigned char command[] = {0x1B, 0x49};
    EXPECT_EQ(dev_pwdkb(icdev, 1, 0, 2, command, nullptr, rdata.data()), -19);
    EXPECT_EQ(dev_pwdkb(icdev, 1, 0, 2, command, &rlen, nullptr), -19);
    EXPECT_EQ(dev_pwdkb(icdev, 1, 0, 2, nullptr, &rlen, rdata.data()), -19);
    EXPECT_EQ(dev_pwdkb_getpwd(icdev, 1, nullptr, rdata.data()), -19);
    EXPECT_EQ(dev_pwdkb_getpwd_encrypt(icdev, 1, &rlen, nullptr), -19);
    EXPECT_TRUE(os.requests.empty());
}

TEST_F(Keypad, ProtectedCommandWrapsASessionKeyUnderARowOfTheSharedTable) {
    answer_protected({'9', '8', '7', '6', 0, 0, 0, 0});
    std::set<Bytes> wrapped_keys;
    for (int run = 0; run < 20; ++run) {
        ASSERT_EQ(dev_pwdkb_getpwd_again_encrypt(icdev, 12, &rlen, rdata.data()), 0);
        const Bytes payload = last_payload();
        ASSERT_EQ(payload.size(), 16u);
        EXPECT_EQ(Bytes(payload.begin(), payload.begin() + 7), (Bytes{0x00, 0x08, 0x00, 0x01, 12, 0x1B, 'E'}));
        EXPECT_LE(payload[7], 9) << "row number";
        EXPECT_EQ(std::ranges::count(session_key, 0xFF), 0) << "the session key never holds FF";
        EXPECT_EQ(rlen, 8);
        EXPECT_EQ(Bytes(rdata.begin(), rdata.begin() + 4), (Bytes{'9', '8', '7', '6'}));
        wrapped_keys.insert(Bytes(payload.begin() + 7, payload.end()));
    }
    EXPECT_EQ(wrapped_keys.size(), 20u) << "a fresh session key for every entry";
    ASSERT_EQ(dev_pwdkb_getpwd_encrypt(icdev, 12, &rlen, rdata.data()), 0);
    EXPECT_EQ(last_payload().at(6), 'I');
}

TEST_F(Keypad, ProtectedReplyLengthDecidesOneOrTwoBlocks) {
    const Bytes sixteen{'1', '2', '3', '4', '5', '6', '7', '8', '9', '0', '1', '2', 0, 0, 0, 0};
    answer_protected(sixteen);
    ASSERT_EQ(dev_pwdkb_getpwd_encrypt(icdev, 1, &rlen, rdata.data()), 0);
    EXPECT_EQ(rlen, 16);
    EXPECT_EQ(Bytes(rdata.begin(), rdata.begin() + 16), sixteen);

    Bytes longer = sixteen;
    longer.resize(24, 0x77);
    answer_protected(longer);
    ASSERT_EQ(dev_pwdkb_getpwd_encrypt(icdev, 1, &rlen, rdata.data()), 0);
    EXPECT_EQ(rlen, 16) << "the rest of a longer reply is ignored";
    EXPECT_EQ(Bytes(rdata.begin(), rdata.begin() + 16), sixteen);

    // Nine bytes: the ninth is deciphered with zeros behind it.
    os.respond = [this](const Bytes& frame) {
        session_key = recover_session_key(payload_of(frame));
        Bytes reply(8, 0x00);
        sim::encipher_blocks(reply, session_key);
        reply.push_back(0xA5);
        return make_reply(0, reply);
    };
    ASSERT_EQ(dev_pwdkb_getpwd_encrypt(icdev, 1, &rlen, rdata.data()), 0);
    EXPECT_EQ(rlen, 16);
    EXPECT_EQ(Bytes(rdata.begin(), rdata.begin() + 8), Bytes(8, 0x00));
    const DesBlock second = sim::des_decrypt({0xA5, 0, 0, 0, 0, 0, 0, 0}, session_key);
    EXPECT_EQ(Bytes(rdata.begin() + 8, rdata.begin() + 16), Bytes(second.begin(), second.end()));
}

}  // namespace
}  // namespace qz::test
