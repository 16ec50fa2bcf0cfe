#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>

#include "card_fixture.h"
#include "qz_32.h"

namespace qz::test {
namespace {

using RfMemory = CardTest;

const Bytes key{0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5};
const Bytes block_data{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
const char* const block_text = "00112233445566778899aabbccddeeff";
// Value 1 at block 4.
const Bytes value_one{0x01, 0x00, 0x00, 0x00, 0xFE, 0xFF, 0xFF, 0xFF, 0x01, 0x00, 0x00, 0x00, 0x04, 0xFB, 0x04, 0xFB};

Bytes value_of(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}
Bytes value_block_of(std::uint32_t value, std::uint8_t block) {
    const Bytes v = value_of(value);
    const auto b = static_cast<std::uint8_t>(~block);
    return concat({v, {static_cast<std::uint8_t>(~v[0]), static_cast<std::uint8_t>(~v[1]),
                       static_cast<std::uint8_t>(~v[2]), static_cast<std::uint8_t>(~v[3])},
                   v, {block, b, block, b}});
}

Bytes text_bytes(const std::string& text) { return Bytes(text.begin(), text.end() + 1); }

// Every export: what it sends for the replies given, and what lands in its output.
struct Row {
    std::string name;
    std::function<int(int, unsigned char*)> call;
    std::vector<Bytes> replies;
    std::vector<Bytes> sent;
    Bytes out;
};

TEST_F(RfMemory, EachExportSendsItsPayloadAndHandsOverItsReply) {
    std::uint32_t value = 0;
    const std::vector<Row> rows{
        {"rf_reset", [](int d, unsigned char*) { return rf_reset(d); }, {}, {{0xC1, 0x4E, 0x00}}, {}},
        {"rf_card", [](int d, unsigned char* o) { return rf_card(d, 1, o); }, {{0x11, 0x22, 0x33, 0x44}},
         {{0xC1, 0x40, 0x00, 0x01}}, {0x11, 0x22, 0x33, 0x44}},
        {"rf_authentication_key",
         [](int d, unsigned char*) { return rf_authentication_key(d, 0x60, 5, key.data()); }, {},
         {concat({{0xC1, 0x5F, 0x00, 0x60, 0x05}, key})}, {}},
        {"rf_read", [](int d, unsigned char* o) { return rf_read(d, 9, o); }, {block_data}, {{0xC1, 0x46, 0x00, 0x09}},
         block_data},
        {"rf_read_hex", [](int d, unsigned char* o) { return rf_read_hex(d, 9, reinterpret_cast<char*>(o)); },
         {block_data}, {{0xC1, 0x46, 0x00, 0x09}}, text_bytes("00112233445566778899AABBCCDDEEFF")},
        {"rf_write", [](int d, unsigned char*) { return rf_write(d, 9, block_data.data()); }, {},
         {concat({{0xC1, 0x47, 0x00, 0x09}, block_data})}, {}},
        {"rf_write_hex", [](int d, unsigned char*) { return rf_write_hex(d, 9, block_text); }, {},
         {concat({{0xC1, 0x47, 0x00, 0x09}, block_data})}, {}},
        {"rf_initval", [](int d, unsigned char*) { return rf_initval(d, 4, 1); }, {},
         {concat({{0xC1, 0x47, 0x00, 0x04}, value_one})}, {}},
        {"rf_readval", [&](int d, unsigned char*) { return rf_readval(d, 4, &value); }, {value_one},
         {{0xC1, 0x46, 0x00, 0x04}}, {}},
        {"rf_increment", [](int d, unsigned char*) { return rf_increment(d, 4, 0x01020304); }, {value_one},
         {{0xC1, 0x46, 0x00, 0x04}, {0xC1, 0x48, 0x00, 0x04, 0x04, 0x03, 0x02, 0x01}, {0xC1, 0x4B, 0x00, 0x04}}, {}},
        {"rf_decrement", [](int d, unsigned char*) { return rf_decrement(d, 4, 1); }, {value_one},
         {{0xC1, 0x46, 0x00, 0x04}, {0xC1, 0x49, 0x00, 0x04, 0x01, 0x00, 0x00, 0x00}, {0xC1, 0x4B, 0x00, 0x04}}, {}},
        {"rf_transfer", [](int d, unsigned char*) { return rf_transfer(d, 7); }, {}, {{0xC1, 0x4B, 0x00, 0x07}}, {}},
        {"rf_restore", [](int d, unsigned char*) { return rf_restore(d, 7); }, {}, {{0xC1, 0x4A, 0x00, 0x07}}, {}},
        {"rf_terminal", [](int d, unsigned char*) { return rf_terminal(d); }, {}, {{0xC1, 0x45, 0x00}}, {}},
        {"rf_halt", [](int d, unsigned char*) { return rf_halt(d); }, {}, {{0xC1, 0x45, 0x00}}, {}},
        {"rf_desele", [](int d, unsigned char*) { return rf_desele(d); }, {}, {{0xC1, 0x33, 0x00}}, {}},
        {"PICC_GetStatus", [](int d, unsigned char* o) { return PICC_GetStatus(d, o); }, {{0x07, 0x08}},
         {{0x32, 0x70, 0x00}}, {0x07}},
        {"PICC_GetStatus_EX", [](int d, unsigned char* o) { return PICC_GetStatus_EX(d, o); }, {{0x05, 0x08}},
         {{0xC1, 0x33, 0x00}}, {0x05}},
        {"rf_antenna", [](int d, unsigned char* o) { return rf_antenna(d, o); }, {{0x00}}, {{0x00, 0x0E, 0x20}}, {0x00}},
        {"ReadMulCardUid", [](int d, unsigned char* o) { return ReadMulCardUid(d, o, o + 1); },
         {{0x02, 0xA1, 0xA2, 0xB1, 0xB2}}, {{0x00, 0x0F}}, {0x02, 0xA1, 0xA2, 0xB1, 0xB2}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        os.requests.clear();
        replies.clear();
        for (const Bytes& data : row.replies) answer({data});
        std::array<unsigned char, 64> out{};
        out.fill(0xEE);
        ASSERT_EQ(row.call(icdev, out.data()), 0);
        EXPECT_EQ(payloads(), row.sent);
        EXPECT_EQ(Bytes(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(row.out.size())), row.out);
        EXPECT_EQ(out[row.out.size()], 0xEE);
    }
    EXPECT_EQ(value, 1u);
}

// A reply that doesn't fit the block the caller gave is refused, never copied in part or past it.
TEST_F(RfMemory, BlockReadsTakeExactlySixteenBytes) {
    std::array<unsigned char, 32> out{};
    answer({Bytes(17, 0x11), Bytes(15, 0x22)});
    EXPECT_EQ(rf_read(icdev, 1, out.data()), -38);
    EXPECT_EQ(rf_read(icdev, 1, out.data()), -39);
    EXPECT_EQ(out, (std::array<unsigned char, 32>{}));
}

TEST_F(RfMemory, ValueArithmeticStopsAtItsLimitsWithNothingSent) {
    struct Case {
        std::uint32_t stored;
        bool increment;
        std::uint32_t amount;
        int result;
    };
    for (const Case& c : std::vector<Case>{{0x7FFFFFFE, true, 1, 0},
                                           {0x7FFFFFFE, true, 2, -50},
                                           {0, true, 0xFFFFFFFF, -50},
                                           {1, true, 0xFFFFFFFF, -50},
                                           {9, false, 9, 0},
                                           {9, false, 10, -51}}) {
        SCOPED_TRACE(c.amount);
        os.requests.clear();
        answer({value_block_of(c.stored, 4)});
        EXPECT_EQ(c.increment ? rf_increment(icdev, 4, c.amount) : rf_decrement(icdev, 4, c.amount), c.result);
        EXPECT_EQ(os.requests.size(), c.result == 0 ? 3u : 1u);
    }
}

TEST_F(RfMemory, ReadingAValueChecksTheFormat) {
    struct Case {
        std::string name;
        Bytes block;
        int result;
    };
    Bytes wrong_copy = value_one;
    wrong_copy[9] = 0x01;
    Bytes equal_inverse = value_one;
    equal_inverse[6] = 0x00;
    Bytes loose_inverse = value_one;  // only needs to differ
    loose_inverse[4] = 0x00;
    Bytes other_address = value_one;
    other_address[12] = other_address[14] = 0x09;
    Bytes address_equal = value_one;
    address_equal[13] = address_equal[15] = 0x04;
    Bytes address_mismatch = value_one;
    address_mismatch[15] = 0x00;
    Bytes address_split = value_one;
    address_split[14] = 0x05;
    for (const Case& c : std::vector<Case>{{"sixteen equal bytes", Bytes(16, 0x5A), -19},
                                           {"second copy differs", wrong_copy, -19},
                                           {"inverse equals value", equal_inverse, -19},
                                           {"loose inverse", loose_inverse, 0},
                                           {"another block's address", other_address, 0},
                                           {"address equals its inverse", address_equal, -19},
                                           {"inverted addresses differ", address_mismatch, -19},
                                           {"addresses differ", address_split, -19}}) {
        SCOPED_TRACE(c.name);
        answer({c.block});
        unsigned int value = 77;
        EXPECT_EQ(rf_readval(icdev, 4, &value), c.result);
        EXPECT_EQ(value, c.result == 0 ? 1u : 77u);
    }
    replies.push_back(make_reply(0x6A82));
    unsigned int value = 0;
    EXPECT_EQ(rf_readval(icdev, 4, &value), -49);
    replies.push_back(make_reply(0x6A82));
    EXPECT_EQ(rf_increment(icdev, 4, 1), -49);
    answer({Bytes(16, 0x5A)});
    EXPECT_EQ(rf_decrement(icdev, 4, 1), -49);
}

TEST_F(RfMemory, RefusalsAndOwnResults) {
    unsigned char status = 0xEE;
    replies.push_back(make_reply(0, {0x03}));
    EXPECT_EQ(rf_antenna(icdev, &status), -24);
    EXPECT_EQ(status, 0x03);
    replies.push_back(make_reply(0x6A82, {0x00}));
    status = 0xEE;
    EXPECT_EQ(rf_antenna(icdev, &status), -23);
    EXPECT_EQ(status, 0xEE);
    EXPECT_EQ(rf_antenna(0, &status), -22);
    EXPECT_EQ(rf_antenna(-1, &status), -22);

    unsigned char count = 0xEE;
    std::array<unsigned char, 4> uids{0xEE, 0xEE, 0xEE, 0xEE};
    answer({{}});
    EXPECT_EQ(ReadMulCardUid(icdev, &count, uids.data()), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(uids[0], 0xEE);

    const std::size_t sent = os.requests.size();
    EXPECT_EQ(rf_write_hex(icdev, 1, "00112233445566778899AABBCCDDEE"), -1);
    EXPECT_EQ(rf_write_hex(icdev, 1, "00112233445566778899AABBCCDDEEFG"), -1);
    EXPECT_EQ(rf_write(icdev, 1, nullptr), -19);
    EXPECT_EQ(rf_authentication_key(icdev, 0x60, 1, nullptr), -19);
    EXPECT_EQ(rf_read(icdev, 1, nullptr), -19);
    EXPECT_EQ(os.requests.size(), sent);
}

}  // namespace
}  // namespace qz::test
