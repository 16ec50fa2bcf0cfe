#include <array>
#include <functional>

#include "pin_fixture.h"
#include "pinpad/pad_commands.h"
#include "qz_32.h"
#include "sim/models/pinpad/des_cipher.h"

namespace qz::test {
namespace {

using pinpad::KeyRow;
using pinpad::pad_state;

const Bytes key8{0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};
const Bytes key16{0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10};
const Bytes work8{0x0B, 0x16, 0x2C, 0x58, 0xB0, 0x61, 0xC2, 0x85};
const Bytes work16{0x3C, 0x5A, 0x69, 0x96, 0xA5, 0xC3, 0x0F, 0xF0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0};

KeyRow row_of(std::uint8_t type, const Bytes& key) {
    KeyRow row{type};
    std::copy(key.begin(), key.end(), row.begin() + 1);
    return row;
}

class PadKeys : public PinTest {};

TEST_F(PadKeys, TimeoutOfSixSecondsAndMoreOpensTheFirstGateAndSetsTheWait) {
    EXPECT_EQ(pwdkb_settimeout(icdev, 5), -19);
    EXPECT_TRUE(os.requests.empty());
    EXPECT_FALSE(pad_state().pwdkb_timeout_set);

    link::set_link_timeouts(5000, 4);
    ASSERT_EQ(pwdkb_settimeout(icdev, 6), 0);
    EXPECT_EQ(last_payload(), (Bytes{0xC5, 0x01, 0x00, 0x06}));
    EXPECT_TRUE(pad_state().pwdkb_timeout_set);
    EXPECT_EQ(pad_state().pwdkb_link_timeout, 7000u);
    EXPECT_EQ(read_ms(), 7000u);
    EXPECT_EQ(link::link_state().write_gap_ms, 0u);

    ASSERT_EQ(pwdkb_settimeout(icdev, 255), 0);
    EXPECT_EQ(pad_state().pwdkb_link_timeout, 256000u);
}

TEST_F(PadKeys, RefusedSettingsLeaveGatesAndWaitAsTheyWere) {
    os.respond = [](const Bytes&) { return make_reply(0x6700); };
    EXPECT_EQ(pwdkb_settimeout(icdev, 30), -0x6700);
    EXPECT_FALSE(pad_state().pwdkb_timeout_set);
    EXPECT_EQ(pad_state().pwdkb_link_timeout, 5000u);
    EXPECT_EQ(read_ms(), 5000u);
    EXPECT_EQ(pwdkb_setpwdlen(icdev, 6), -0x6700);
    EXPECT_FALSE(pad_state().pwdkb_pwdlen_set);
}

TEST_F(PadKeys, PinLengthOneToEighteenOpensTheSecondGate) {
    for (unsigned char bad : {0, 19, 255}) EXPECT_EQ(pwdkb_setpwdlen(icdev, bad), -19);
    EXPECT_TRUE(os.requests.empty());
    for (unsigned char good : {1, 18}) {
        ASSERT_EQ(pwdkb_setpwdlen(icdev, good), 0);
        EXPECT_EQ(last_payload(), (Bytes{0xC5, 0x02, 0x00, good}));
    }
    EXPECT_TRUE(pad_state().pwdkb_pwdlen_set);
    EXPECT_FALSE(pad_state().pwdkb_timeout_set);
}

TEST_F(PadKeys, KeyLoadsSendTheKeyAsGiven) {
    expect_payloads(os, {
        {[&] { return pwdkb_load_mainkey(icdev, 0, 3, key8.data()); }, concat({{0xC5, 0x03, 0x00, 0x00, 0x03}, key8})},
        {[&] { return pwdkb_load_mainkey(icdev, 1, 3, key16.data()); }, concat({{0xC5, 0x03, 0x00, 0x01, 0x03}, key16})},
        {[&] { return pwdkb_load_workkey(icdev, 0, 2, 9, key8.data()); },
         concat({{0xC5, 0x04, 0x00, 0x00, 0x02, 0x09}, key8})},
        {[&] { return pwdkb_load_workkey(icdev, 1, 2, 9, key16.data()); },
         concat({{0xC5, 0x04, 0x00, 0x01, 0x02, 0x09}, key16})},
        {[&] { return pinpad::load_workkey_nb(icdev, 1, 2, 200, key16.data()); },
         concat({{0xC5, 0x07, 0x00, 0x01, 0x02, 200}, key16})},
    });
    EXPECT_EQ(pad_state().pwdkb_work_keys, pinpad::KeyTable{}) << "a work key load keeps nothing on the host";
}

TEST_F(PadKeys, KeyModeAboveOneAndNullKeysAreRefused) {
    EXPECT_EQ(pwdkb_load_mainkey(icdev, 2, 0, key16.data()), -19);
    EXPECT_EQ(pwdkb_load_workkey(icdev, 2, 0, 0, key16.data()), -19);
    EXPECT_EQ(pinpad::load_workkey_nb(icdev, 255, 0, 0, key16.data()), -19);
    EXPECT_EQ(pinpad::load_workkey_wrapped(icdev, 2, 0, 0, key16.data()), -19);
    EXPECT_EQ(pwdkb_load_mainkey(icdev, 0, 0, nullptr), -19);
    EXPECT_EQ(pwdkb_load_workkey(icdev, 0, 0, 0, nullptr), -19);
    EXPECT_TRUE(os.requests.empty());
    EXPECT_EQ(pad_state().pwdkb_main_keys, pinpad::KeyTable{});
}

TEST_F(PadKeys, MainKeyRowIsWrittenOnlyOnceThePadTookIt) {
    ASSERT_EQ(pwdkb_load_mainkey(icdev, 1, 4, key16.data()), 0);
    EXPECT_EQ(pad_state().pwdkb_main_keys[4], row_of(1, key16));

    // An 8-byte key over a 16-byte one: type and first half change, the second half stays.
    ASSERT_EQ(pwdkb_load_mainkey(icdev, 0, 4, work8.data()), 0);
    EXPECT_EQ(pad_state().pwdkb_main_keys[4], row_of(0, concat({work8, Bytes(key16.begin() + 8, key16.end())})));

    os.respond = [](const Bytes&) { return make_reply(0x6A80); };
    EXPECT_EQ(pwdkb_load_mainkey(icdev, 1, 4, key16.data()), -0x6A80);
    EXPECT_EQ(pad_state().pwdkb_main_keys[4].at(0), 0) << "a refused load leaves the row";
}

TEST_F(PadKeys, MainKeyNumbersOfSixteenAndMoreGoToThePadButNotIntoTheHostTable) {
    for (unsigned char number : {16, 17, 255}) {
        ASSERT_EQ(pwdkb_load_mainkey(icdev, 1, number, key16.data()), 0);
        EXPECT_EQ(last_payload().at(4), number);
    }
    EXPECT_EQ(pad_state().pwdkb_main_keys, pinpad::KeyTable{});
    EXPECT_EQ(pad_state().pwdkb_work_keys, pinpad::KeyTable{});
}

TEST_F(PadKeys, WrappedLoadEnciphersEachBlockUnderTheMainKeyAndKeepsTheClearKey) {
    struct Case {
        Bytes main;  // DES for 8 bytes, encrypt-decrypt-encrypt for 16
        Bytes work;
    };
    const std::vector<Case> cases{{key8, work8}, {key16, work16}, {key8, work16}, {key16, work8}};
    for (const Case& c : cases) {
        const auto keymode = static_cast<std::uint8_t>(c.work.size() / 16);
        pad_state().pwdkb_main_keys[2] = row_of(static_cast<std::uint8_t>(c.main.size() / 16), c.main);
        ASSERT_EQ(pinpad::load_workkey_wrapped(icdev, keymode, 2, 15, c.work.data()), 0);
        Bytes wrapped = c.work;
        sim::encipher_blocks(wrapped, c.main);
        EXPECT_EQ(last_payload(), concat({{0xC5, 0x04, 0x00, keymode, 0x02, 0x0F}, wrapped}));
        EXPECT_EQ(pad_state().pwdkb_work_keys[15], row_of(keymode, c.work));
        pad_state().pwdkb_work_keys[15] = {};
    }
}

TEST_F(PadKeys, WrappedLoadNeedsHostRowsAndStoresNothingWhenRefused) {
    EXPECT_EQ(pinpad::load_workkey_wrapped(icdev, 0, 16, 0, work8.data()), -19);
    EXPECT_EQ(pinpad::load_workkey_wrapped(icdev, 0, 0, 16, work8.data()), -19);
    EXPECT_EQ(pinpad::load_workkey_wrapped(icdev, 0, 0, 0, nullptr), -19);
    EXPECT_TRUE(os.requests.empty());

    os.respond = [](const Bytes&) { return make_reply(0x6A88); };
    EXPECT_EQ(pinpad::load_workkey_wrapped(icdev, 0, 0, 0, work8.data()), -0x6A88);
    EXPECT_EQ(pad_state().pwdkb_work_keys, pinpad::KeyTable{});
}

TEST_F(PadKeys, PwdDecryptFollowsTheTypeOfTheCurrentWorkKey) {
    const Bytes plain{0x04, 0x12, 0x34, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    std::array<unsigned char, 16> out{};

    pad_state().pwdkb_work_keys[6] = row_of(0, work8);
    pad_state().pwdkb_work_index = 6;
    Bytes cipher = plain;
    sim::encipher_blocks(cipher, work8);
    ASSERT_EQ(pwd_decrypt(cipher.data(), 8, out.data()), 0);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 8), plain);

    pad_state().pwdkb_work_keys[7] = row_of(1, work16);
    pad_state().pwdkb_work_index = 7;
    cipher = plain;
    sim::encipher_blocks(cipher, work16);
    ASSERT_EQ(pwd_decrypt(cipher.data(), 8, out.data()), 0);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 8), plain);

    EXPECT_EQ(pwd_decrypt(cipher.data(), 0, out.data()), -19);
    EXPECT_EQ(pwd_decrypt(cipher.data(), 17, out.data()), -19);
}

TEST_F(PadKeys, PwdDecryptRefusesWorkKeyNumbersOfSixteenAndMore) {
    open_gates();
    answer_with(Bytes(8, 0x11));
    std::array<unsigned char, 50> rdata{};
    unsigned char rlen = 0;
    const Bytes card(6, 0x00);
    ASSERT_EQ(pwdkb_getpwd_encrypt2(icdev, 16, card.data(), &rlen, rdata.data()), 0);
    EXPECT_EQ(pad_state().pwdkb_work_index, 16u);
    std::array<unsigned char, 8> out;
    out.fill(0xEE);
    EXPECT_EQ(pwd_decrypt(rdata.data(), 8, out.data()), -19);
    EXPECT_EQ(out[0], 0xEE);
}

}  // namespace
}  // namespace qz::test
