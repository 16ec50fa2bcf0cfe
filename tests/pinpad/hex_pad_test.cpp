#include <array>
#include <cstring>
#include <string>

#include "pin_fixture.h"
#include "qz_32.h"

namespace qz::test {
namespace {

using pinpad::pad_state;

const Bytes card{0x62, 0x22, 0x01, 0x23, 0x45, 0x67};
constexpr const char* card_text = "622201234567";

class HexPad : public PinTest {
protected:
    std::array<unsigned char, 64> out{};
    std::array<char, 64> text{};
};

TEST_F(HexPad, PinEntryChoosesTheFormByPadTypeAndMode) {
    struct Case {
        int kb_type;
        int mode;
        Bytes clear;      // what mw_kb_getpin sends
        Bytes encrypted;  // what mw_kb_getenpin sends, behind it the key number 3, 00 00, the card
    };
    const std::vector<Case> cases{
        {1, 1, {0xC5, 0x05, 0x00, 0x1B, 'I'}, {0xC5, 0x06, 0x00, 0x1B, 'I'}},
        {1, 2, {0xC5, 0x05, 0x00, 0x1B, 'E'}, {0xC5, 0x06, 0x00, 0x1B, 'E'}},
        {1, 3, {0xC5, 0x05, 0x00, 0x1B, 'H', '1', 0x0D, 0x0A}, {0xC5, 0x06, 0x00, 0x1B, 'H', '1'}},
        {1, 4, {0xC5, 0x05, 0x00, 0x1B, 'H', '3', 0x0D, 0x0A}, {0xC5, 0x06, 0x00, 0x1B, 'H', '3'}},
        {0, 1, {0xC5, 0x09, 0x00, 0x1B, 'H', '0', 0x0D, 0x0A}, {0xC5, 0x0A, 0x00, 0x1B, 'H', '0'}},
        {0, 2, {0xC5, 0x09, 0x00, 0x1B, 'H', '2', 0x0D, 0x0A}, {0xC5, 0x0A, 0x00, 0x1B, 'H', '2'}},
        {2, 3, {0xC5, 0x09, 0x00, 0x1B, 'H', '1', 0x0D, 0x0A}, {0xC5, 0x0A, 0x00, 0x1B, 'H', '1'}},
        {-7, 4, {0xC5, 0x09, 0x00, 0x1B, 'H', '3', 0x0D, 0x0A}, {0xC5, 0x0A, 0x00, 0x1B, 'H', '3'}},
    };
    open_gates();
    answer_with({0x31, 0x32});
    for (const Case& c : cases) {
        set_kb_type(c.kb_type);
        pad_state().pwdkb_work_index = 3;
        ASSERT_EQ(mw_kb_getpin(icdev, c.mode, out.data()), 0);
        EXPECT_EQ(last_payload(), c.clear) << "type " << c.kb_type << " mode " << c.mode;
        ASSERT_EQ(mw_kb_getenpin(icdev, c.mode, card_text, text.data()), 0);
        EXPECT_EQ(last_payload(), concat({c.encrypted, {0x03, 0x00, 0x00}, card}))
            << "type " << c.kb_type << " mode " << c.mode;
    }
}

TEST_F(HexPad, ModeIsCheckedBeforeTheGates) {
    for (int mode : {0, 5, -1}) {
        EXPECT_EQ(mw_kb_getpin(icdev, mode, out.data()), -19);
        EXPECT_EQ(mw_kb_getenpin(icdev, mode, card_text, text.data()), -19);
    }
    for (int mode : {0, 3}) EXPECT_EQ(mw_kb_getenpin_nb(icdev, mode, 1, text.data()), -19);
    EXPECT_EQ(mw_kb_getpin(icdev, 1, out.data()), -66);
    EXPECT_EQ(mw_kb_getenpin(icdev, 4, card_text, text.data()), -66);
    EXPECT_EQ(mw_kb_getenpin_nb(icdev, 2, 1, text.data()), -66);
    pad_state().pwdkb_timeout_set = true;
    EXPECT_EQ(mw_kb_getenpin_nb(icdev, 2, 1, text.data()), -65);
    EXPECT_TRUE(os.requests.empty());
}

TEST_F(HexPad, ClearPinComesBackRawAndEncryptedPinAsUpperCaseHex) {
    open_gates();
    out.fill(0xEE);
    answer_with({'1', '2', '3', '4'});
    ASSERT_EQ(mw_kb_getpin(icdev, 1, out.data()), 0);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 5), (Bytes{'1', '2', '3', '4', 0xEE})) << "no terminator";

    answer_with({0xAB, 0x01, 0xFE, 0x7C, 0x00, 0x10, 0x9A, 0x5D});
    ASSERT_EQ(mw_kb_getenpin(icdev, 1, "abcdef012345", text.data()), 0);
    EXPECT_STREQ(text.data(), "AB01FE7C00109A5D");
    EXPECT_EQ(last_payload().back(), 0x45) << "card text in lower case";
}

TEST_F(HexPad, EncryptedReplyLongerThanSixteenBytesIsRefused) {
    open_gates();
    text.fill('x');
    answer_with(Bytes(17, 0x11));
    EXPECT_EQ(mw_kb_getenpin(icdev, 1, card_text, text.data()), -38);
    EXPECT_EQ(mw_kb_getenpin_nb(icdev, 1, 2, text.data()), -38);
    EXPECT_EQ(text[0], 'x');
    answer_with(Bytes(16, 0x11));
    ASSERT_EQ(mw_kb_getenpin_nb(icdev, 1, 2, text.data()), 0);
    EXPECT_EQ(std::strlen(text.data()), 32u);
}

TEST_F(HexPad, BadCardTextEndsTheCallWithMinusOneBeforeAnythingIsSent) {
    open_gates();
    for (const char* bad : {"62220123456G", "62220123", "", "6222 1234567"})
        EXPECT_EQ(mw_kb_getenpin(icdev, 1, bad, text.data()), -1) << bad;
    EXPECT_TRUE(os.requests.empty());
}

TEST_F(HexPad, EntryUnderAGivenKeyNeitherNamesACardNorRecordsTheKey) {
    open_gates();
    answer_with({0x10, 0x20});
    pad_state().pwdkb_work_index = 4;
    ASSERT_EQ(mw_kb_getenpin_nb(icdev, 1, 0x09, text.data()), 0);
    EXPECT_EQ(last_payload(), (Bytes{0xC5, 0x08, 0x00, 0x1B, 'I', 0x09}));
    EXPECT_STREQ(text.data(), "1020");
    ASSERT_EQ(mw_kb_getenpin_nb(icdev, 2, 0x09, text.data()), 0);
    EXPECT_EQ(last_payload(), (Bytes{0xC5, 0x08, 0x00, 0x1B, 'E', 0x09}));
    EXPECT_EQ(pad_state().pwdkb_work_index, 4u);

    pad_state().pwdkb_work_index = 0x0107;  // the entry sends its low byte
    ASSERT_EQ(mw_kb_getenpin(icdev, 1, card_text, text.data()), 0);
    EXPECT_EQ(last_payload().at(6), 0x07);
    EXPECT_EQ(pad_state().pwdkb_work_index, 7u);
}

TEST_F(HexPad, ActiveKeyPicksAWorkKeyWithinTheSmallRanges) {
    EXPECT_EQ(mw_kb_activekey(icdev, 0, 8), -19);
    EXPECT_EQ(mw_kb_activekey(icdev, 4, 1), -19);
    EXPECT_EQ(mw_kb_activekey(icdev, 0, -1), -19);
    EXPECT_EQ(pad_state().pwdkb_work_index, 0u);
    EXPECT_EQ(mw_kb_activekey(icdev, 3, 7), 0);
    EXPECT_EQ(pad_state().pwdkb_work_index, 7u);
    EXPECT_TRUE(os.requests.empty());
}

TEST_F(HexPad, KeyDownloadsTurnTextIntoKeyBytes) {
    const Bytes key8{0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};
    const Bytes key16 = concat({key8, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}});
    const char* text16 = "0123456789abcdef";
    const char* text32 = "0123456789ABCDEFfedcba9876543210";
    expect_payloads(os, {
        {[&] { return mw_kb_downloadmainkey(icdev, 0, 3, text16); }, concat({{0xC5, 0x03, 0x00, 0x00, 0x03}, key8})},
        {[&] { return mw_kb_downloadmainkey(icdev, 1, 0, text32); }, concat({{0xC5, 0x03, 0x00, 0x01, 0x00}, key16})},
        {[&] { return mw_kb_downloaduserkey(icdev, 1, 2, 7, text32); },
         concat({{0xC5, 0x04, 0x00, 0x01, 0x02, 0x07}, key16})},
        {[&] { return mw_kb_downloaduserkey_nb(icdev, 0, 9, 200, text32); },
         concat({{0xC5, 0x07, 0x00, 0x00, 0x09, 200}, key8})},
    });
}

TEST_F(HexPad, KeyDownloadsCheckNumbersAndTextBeforeSending) {
    const char* text32 = "0123456789ABCDEF0123456789ABCDEF";
    EXPECT_EQ(mw_kb_downloadmainkey(icdev, 2, 0, text32), -19);
    EXPECT_EQ(mw_kb_downloadmainkey(icdev, 0, 4, text32), -19);
    EXPECT_EQ(mw_kb_downloaduserkey(icdev, 0, 0, 8, text32), -19);
    EXPECT_EQ(mw_kb_downloaduserkey(icdev, 0, -1, 0, text32), -19);
    EXPECT_EQ(mw_kb_downloaduserkey_nb(icdev, -1, 0, 0, text32), -19);
    EXPECT_EQ(mw_kb_downloadmainkey(icdev, 0, 0, nullptr), -19);
    EXPECT_EQ(mw_kb_downloadmainkey(icdev, 1, 0, "0123456789ABCDEF0123456789ABCDEZ"), -1);
    EXPECT_EQ(mw_kb_downloadmainkey(icdev, 1, 0, "0123456789ABCDEF"), -1) << "16 digits for a 16-byte key";
    EXPECT_EQ(mw_kb_downloaduserkey_nb(icdev, 0, 0, 0, "0123"), -1);
    EXPECT_TRUE(os.requests.empty());
    EXPECT_EQ(pad_state().pwdkb_main_keys, pinpad::KeyTable{});
}

TEST_F(HexPad, SettingsAndTheSessionCalls) {
    EXPECT_EQ(mw_kb_open(17, -3), 0);
    EXPECT_TRUE(os.requests.empty());

    ASSERT_EQ(set_kb_outputMode(icdev, 0x1234), 0);
    EXPECT_EQ(last_payload(), (Bytes{0xC5, 0x0E, 0x00, 0x34}));
    EXPECT_EQ(mw_kb_settimeout(icdev, 5), -19);
    ASSERT_EQ(mw_kb_settimeout(icdev, 9), 0);
    EXPECT_EQ(last_payload(), (Bytes{0xC5, 0x01, 0x00, 0x09}));
    EXPECT_EQ(read_ms(), 10000u);
    EXPECT_EQ(mw_kb_setpasslen(icdev, 19), -19);
    ASSERT_EQ(mw_kb_setpasslen(icdev, 4), 0);
    EXPECT_EQ(last_payload(), (Bytes{0xC5, 0x02, 0x00, 0x04}));

    set_kb_type(1);
    ASSERT_EQ(mw_kb_close(icdev), 0);
    EXPECT_EQ(read_ms(), 5000u);
    EXPECT_TRUE(pad_state().pwdkb_timeout_set && pad_state().pwdkb_pwdlen_set) << "close clears no gate";
    EXPECT_EQ(pad_state().kb_type, 1);
}

}  // namespace
}  // namespace qz::test
