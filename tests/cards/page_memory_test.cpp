#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>

#include "card_fixture.h"
#include "link/link_state.h"
#include "qz_32.h"

namespace qz::test {
namespace {

using PageMemory = CardTest;

const Bytes page{0x10, 0x20, 0x30, 0x40};
const Bytes key{0x31, 0x32, 0x33, 0x34};
const Bytes uid_reply{0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09};

struct Row {
    std::string name;
    std::function<int(int, unsigned char*)> call;
    Bytes reply;
    Bytes sent;
    Bytes out;
};

TEST_F(PageMemory, EachExportSendsItsPayloadAndHandsOverItsReply) {
    const std::vector<Row> rows{
        {"MF_OpenCard", [](int d, unsigned char* o) { return MF_OpenCard(d, 1, o); }, uid_reply,
         {0xC1, 0x40, 0x00, 0x01}, {0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01}},
        {"MF_Authentication", [](int d, unsigned char*) { return MF_Authentication(d, key.data(), 3); }, {},
         {0xC1, 0x4F, 0x00, 0x03, 0x31, 0x32, 0x33}, {}},
        {"MF_Read", [](int d, unsigned char* o) { return MF_Read(d, 5, o); }, concat({page, page}),
         {0xC1, 0x46, 0x00, 0x05}, page},
        {"MF_Write_4bytes", [](int d, unsigned char*) { return MF_Write_4bytes(d, 5, page.data()); }, {},
         concat({{0xC1, 0x4C, 0x00, 0x05}, page}), {}},
        {"MF_WriteOTp", [](int d, unsigned char*) { return MF_WriteOTp(d, page.data()); }, {},
         concat({{0xC1, 0x4C, 0x00, 0x03}, page}), {}},
        {"MF_WriteLock", [](int d, unsigned char*) { return MF_WriteLock(d, 9); }, {},
         {0xC1, 0x4C, 0x00, 0x02, 0x00, 0x00, 0x00, 0x02}, {}},
        {"NTAG215_OpenCard", [](int d, unsigned char* o) { return NTAG215_OpenCard(d, o); }, uid_reply,
         {0xC1, 0x40, 0x00, 0x00}, {0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02}},
        {"NTAG215_Read", [](int d, unsigned char* o) { return NTAG215_Read(d, 6, o); }, concat({page, page, page}),
         {0xC1, 0x46, 0x06}, concat({page, page, page})},
        {"NTAG215_Write_4bytes", [](int d, unsigned char*) { return NTAG215_Write_4bytes(d, 6, page.data()); }, {},
         concat({{0xC1, 0x4C, 0x06}, page}), {}},
        {"NTAG215_Authentication", [](int d, unsigned char*) { return NTAG215_Authentication(d, key.data(), 4); },
         {}, concat({{0xC1, 0x4F}, key}), {}},
        {"NTAG215_ChangeKey", [](int d, unsigned char*) { return NTAG215_ChangeKey(d, key.data(), 4); }, {},
         concat({{0xC1, 0x4C, 0x85}, key}), {}},
        {"NTAG215_WriteLock", [](int d, unsigned char*) { return NTAG215_WriteLock(d); }, {},
         {0xC1, 0x4C, 0x82, 0x70, 0x00, 0x00, 0x00}, {}},
        {"NTAG215_ReadBaseInfo", [](int d, unsigned char* o) { return NTAG215_ReadBaseInfo(d, o); },
         {'a', 'b', 'c', 0x00, 'd'}, {0xC1, 0x50, 0x50, 0x7F}, {'a', 'b', 'c', 0x00}},
        {"ActiveCard",
         [](int d, unsigned char* o) { return ActiveCard(d, 1, o, o + 1, o + 6, o + 5); },
         {0x08, 0x04, 0xA1, 0xA2, 0xA3, 0xA4, 0x02, 0x77, 0x88}, {0xC1, 0x30, 0x00, 0x01},
         {0x08, 0xA1, 0xA2, 0xA3, 0xA4, 0x02, 0x77, 0x88}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        os.requests.clear();
        answer({row.reply});
        std::array<unsigned char, 64> out{};
        out.fill(0xEE);
        ASSERT_EQ(row.call(icdev, out.data()), 0);
        EXPECT_EQ(payloads(), std::vector<Bytes>{row.sent});
        EXPECT_EQ(Bytes(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(row.out.size())), row.out);
        EXPECT_EQ(out[row.out.size()], 0xEE);
    }
    EXPECT_EQ(link::link_state().read_ms, 2000u);  // left behind by NTAG215_OpenCard
}

TEST_F(PageMemory, LockBitOfEachPage) {
    struct Case {
        std::uint8_t page;
        Bytes sent;  // empty: refused with -1
    };
    const auto lock = [](std::uint8_t lock_page, std::size_t byte, std::uint8_t value) {
        Bytes payload{0xC1, 0x4C, 0x00, lock_page, 0, 0, 0, 0};
        payload[4 + byte] = value;
        return payload;
    };
    const std::vector<Case> cases{
        {0, {}}, {1, {}}, {2, {}}, {3, lock(2, 2, 0x08)}, {7, lock(2, 2, 0x80)}, {8, lock(2, 3, 0x01)},
        {15, lock(2, 3, 0x80)}, {16, lock(40, 0, 0x02)}, {19, lock(40, 0, 0x02)}, {20, lock(40, 0, 0x04)},
        {27, lock(40, 0, 0x08)}, {28, lock(40, 0, 0x20)}, {35, lock(40, 0, 0x40)}, {39, lock(40, 0, 0x80)},
        {40, {}}, {41, {}}, {42, lock(40, 1, 0x20)}, {43, lock(40, 1, 0x40)}, {44, lock(40, 1, 0x80)},
        {47, lock(40, 1, 0x80)}, {48, {}}, {255, {}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.page));
        os.requests.clear();
        EXPECT_EQ(MF_WriteLock(icdev, c.page), c.sent.empty() ? -1 : 0);
        EXPECT_EQ(payloads(), c.sent.empty() ? std::vector<Bytes>{} : std::vector<Bytes>{c.sent});
    }
}

TEST_F(PageMemory, InitAuthenticatesChangesTheKeyWritesTheTextAndLocks) {
    const auto write = [](std::uint8_t target, Bytes data) { return concat({{0xC1, 0x4C, target}, data}); };
    const Bytes factory{0xC1, 0x4F, 0xFF, 0xFF, 0xFF, 0xFF};
    const Bytes lock = write(0x82, {0x70, 0x00, 0x00, 0x00});
    struct Case {
        std::string text;
        std::vector<Bytes> sent;
    };
    const std::vector<Case> cases{
        {"", {factory, write(0x85, key), lock}},
        {"abcde", {factory, write(0x85, key), write(80, {'a', 'b', 'c', 'd'}), write(81, {'e', 0, 0, 0}), lock}},
    };
    for (const Case& c : cases) {
        os.requests.clear();
        EXPECT_EQ(NTAG215_Init(icdev, key.data(), c.text.c_str()), 0);
        EXPECT_EQ(payloads(), c.sent);
    }
    os.requests.clear();
    const std::string full(192, 'x');
    EXPECT_EQ(NTAG215_Init(icdev, key.data(), full.c_str()), 0);
    ASSERT_EQ(os.requests.size(), 2u + 48u + 1u);
    EXPECT_EQ(payload_of(os.requests[49]), write(127, {'x', 'x', 'x', 'x'}));

    // Where each step fails, and that it stops there.
    struct Failure {
        std::size_t failing_request;
        std::string text;
        short result;
    };
    for (const Failure& f : std::vector<Failure>{{0, "ab", -1}, {1, "ab", -2}, {3, "abcdefgh", -3},
                                                 {3, "ab", -4}, {99, std::string(193, 'y'), -5}}) {
        SCOPED_TRACE(f.result);
        os.requests.clear();
        replies.clear();
        for (std::size_t i = 0; i < f.failing_request; ++i) answer({{}});
        replies.push_back(make_reply(0x6300));
        EXPECT_EQ(NTAG215_Init(icdev, key.data(), f.text.c_str()), f.result);
        EXPECT_EQ(os.requests.size(), f.result == -5 ? 2u : f.failing_request + 1);
    }
}

TEST_F(PageMemory, RefusalsAndShortReplies) {
    std::array<unsigned char, 16> out{};
    EXPECT_EQ(NTAG215_ChangeKey(icdev, key.data(), 3), -1);
    EXPECT_EQ(NTAG215_Authentication(icdev, key.data(), 5), -1);
    EXPECT_EQ(MF_Authentication(icdev, key.data(), 197), -1);
    EXPECT_EQ(MF_Read(icdev, 4, nullptr), -1);
    EXPECT_TRUE(os.requests.empty());

    answer({{0x01, 0x02, 0x03}, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07}});
    EXPECT_EQ(MF_Read(icdev, 4, out.data()), -39);
    EXPECT_EQ(NTAG215_OpenCard(icdev, out.data()), -39);
    EXPECT_EQ(out, (std::array<unsigned char, 16>{}));

    unsigned char type = 0;
    unsigned char length = 0xEE;
    // UID length 4, answer length 0; then a UID length that runs past the end.
    answer({{0x44, 0x04, 0x01, 0x02, 0x03, 0x04, 0x00}, {0x44, 0x09, 0x01}});
    EXPECT_EQ(ActiveCard(icdev, 0, &type, out.data(), out.data() + 8, &length), 0);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(out[3], 0x04);
    length = 0xEE;
    EXPECT_EQ(ActiveCard(icdev, 0, &type, out.data(), out.data() + 8, &length), -39);
    EXPECT_EQ(length, 0);
}

}  // namespace
}  // namespace qz::test
