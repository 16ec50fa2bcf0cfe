// Contact memory cards: the ranges refused before anything is sent, card type
// detection, the chunked SLE4428 transfers, the AT88SC102 erase read-back and the
// AT88SC1604 code write.
#include <gtest/gtest.h>

#include <array>
#include <functional>

#include "card_fixture.h"
#include "link/link_state.h"
#include "qz_32.h"

namespace qz::test {
namespace {

using MemoryRules = CardTest;

std::array<unsigned char, 2048> buffer{};
const unsigned char* data = buffer.data();
unsigned char* out = buffer.data();

TEST_F(MemoryRules, RangesAreCheckedBeforeSending) {
    const struct {
        const char* name;
        std::function<int(int)> call;
        bool accepted;
    } rows[] = {
        {"4442 read 255+1", [](int d) { return sle4442_read(d, 255, 1, out); }, true},
        {"4442 read 255+2", [](int d) { return sle4442_read(d, 255, 2, out); }, false},
        {"4442 write 0+257", [](int d) { return sle4442_write(d, 0, 257, data); }, false},
        {"4442 probit 32+0", [](int d) { return sle4442_probit_write(d, 32, 0, data); }, true},
        {"4442 probit 33+0", [](int d) { return sle4442_probit_write(d, 33, 0, data); }, false},
        {"4442 probit 31+2", [](int d) { return sle4442_probit_write(d, 31, 2, data); }, false},
        {"4428 read length 0", [](int d) { return sle4428_read(d, 0, 0, out); }, false},
        {"4428 read 1024+1", [](int d) { return sle4428_read(d, 1024, 1, out); }, false},
        {"4428 write 1+1024", [](int d) { return sle4428_write(d, 1, 1024, data); }, false},
        {"102 probit_clr 0", [](int d) { return at88sc102_probit_clr(d, 0); }, false},
        {"102 ua2_modify sel 3", [](int d) { return at88sc102_ua2_modifydata(d, 3, 0, 1, data); }, false},
        {"102 ua1_read length 0", [](int d) { return at88sc102_ua1_readdata(d, 0, 0, out); }, false},
        {"102 ua1_read offset 64", [](int d) { return at88sc102_ua1_readdata(d, 64, 1, out); }, false},
        {"102 ua1_read 63+1", [](int d) { return at88sc102_ua1_readdata(d, 63, 1, out); }, true},
        {"1604 read zone 1 21+1201", [](int d) { return srd_1604(d, 1, 21, 1201, out); }, true},
        {"1604 write zone 1 21+1201", [](int d) { return swr_1604(d, 1, 21, 1201, data); }, false},
        {"1604 write zone 2 1227+256", [](int d) { return swr_1604(d, 2, 1227, 256, data); }, true},
        {"1604 write zone 2 1226+256", [](int d) { return swr_1604(d, 2, 1226, 256, data); }, false},
        {"1604 read zone 5 2006+2", [](int d) { return srd_1604(d, 5, 2006, 2, out); }, false},
        {"1604 read zone 5 2006+1", [](int d) { return srd_1604(d, 5, 2006, 1, out); }, true},
        {"1604 erase length 0", [](int d) { return ser_1604(d, 0, 0, 0); }, false},
        {"1604 erase zone 0 20+2", [](int d) { return ser_1604(d, 0, 20, 2); }, false},
        {"1604 code write zone 9", [](int d) { return wsc_1604(d, 9, 2, data); }, false},
        {"1604 code write length 3", [](int d) { return wsc_1604(d, 1, 3, data); }, false},
        {"1604 code check zone 0", [](int d) { return csc_1604(d, 0, 2, data); }, true},
        {"1604 key check zone 4", [](int d) { return cesc_1604(d, 4, 2, data); }, true},
        {"1604 fake fuse 2", [](int d) { return fakefus_1604(d, 2); }, false},
        {"24c01a read 120+7", [](int d) { return at24c01a_read(d, 120, 7, out); }, true},
        {"24c01a read 120+8", [](int d) { return at24c01a_read(d, 120, 8, out); }, false},
        {"24c01a write length 0", [](int d) { return at24c01a_write(d, 127, 0, data); }, true},
        {"null output", [](int d) { return sle4442_errcount_read(d, nullptr); }, false},
        {"null length", [](int d) { return sle4442_probit_read(d, nullptr, out); }, false},
        {"null type", [](int d) { return contact_verify(d, nullptr); }, false},
    };
    for (const auto& row : rows) {
        os.requests.clear();
        EXPECT_EQ(row.call(icdev), row.accepted ? 0 : -19) << row.name;
        EXPECT_EQ(os.requests.size(), row.accepted ? 1U : 0U) << row.name;
    }
}

TEST_F(MemoryRules, CardTypeFromTheWholeCode) {
    const struct {
        Bytes reply;
        int result;
        unsigned char type;
    } rows[] = {
        {{0x81, 0x13, 0x00}, 0, 3}, {{0x81, 0x15}, 0, 4},  {{0xA2, 0x13}, 0, 4},   {{0x92, 0x23}, 0, 3},
        {{0x00, 0x00}, 0, 0xFF},    {{0xFF, 0xFF}, 0, 0xFF}, {{0x16, 0x04}, 0, 5}, {{0x31, 0x3A}, 0, 5},
        {{0x81, 0x14}, -20, 0xEE},  {{0x81}, -39, 0xEE},
    };
    for (const auto& row : rows) {
        answer({row.reply});
        unsigned char type = 0xEE;
        EXPECT_EQ(contact_verify(icdev, &type), row.result) << int(row.reply[0]);
        EXPECT_EQ(type, row.type) << int(row.reply[0]);
    }
    EXPECT_EQ(payloads().front(), (Bytes{0xC0, 0x82, 0x00}));
}

TEST_F(MemoryRules, TypeTestsFallBackToTheCodeInMemory) {
    const struct {
        const char* name;
        int (*test)(int, unsigned char*);
        std::vector<Bytes> replies;
        std::vector<Bytes> sent;
        unsigned char flag;
    } rows[] = {
        {"is42 on a 4428", sle4442_is42, {{0x92, 0x23}}, {{0xC0, 0x82, 0x00}}, 1},
        {"is42 on a 4442", sle4442_is42, {{0xA0, 0x15}}, {{0xC0, 0x82, 0x00}}, 0},
        {"is42 on a blank card", sle4442_is42, {{0xFF, 0xFF}}, {{0xC0, 0x82, 0x00}}, 0xFF},
        {"is28 on a blank card", sle4428_is28, {{0x00, 0x00}}, {{0xC0, 0x82, 0x00}}, 1},
        {"is42 unknown, code in memory",
         sle4442_is42,
         {{0x12, 0x34}, {0x88, 0x15}},
         {{0xC0, 0x82, 0x00}, {0xC0, 0x40, 0x00, 0x06, 0x02, 0x00}},
         0},
        {"is28 unknown, code in memory",
         sle4428_is28,
         {{0x12, 0x34}, {0x81, 0x13}},
         {{0xC0, 0x82, 0x00}, {0xC0, 0x85, 0x00, 0x06, 0x00, 0x00, 0x02}},
         0},
        {"is28 unknown, other code",
         sle4428_is28,
         {{0x12, 0x34}, {0x81, 0x15}},
         {{0xC0, 0x82, 0x00}, {0xC0, 0x85, 0x00, 0x06, 0x00, 0x00, 0x02}},
         1},
    };
    for (const auto& row : rows) {
        os.requests.clear();
        for (const Bytes& r : row.replies) answer({r});
        unsigned char flag = 0xEE;
        EXPECT_EQ(row.test(icdev, &flag), 0) << row.name;
        EXPECT_EQ(flag, row.flag) << row.name;
        EXPECT_EQ(payloads(), row.sent) << row.name;
    }
    // The fallback read's failure is the result.
    replies.push_back(make_reply(0x6F00));
    replies.push_back(make_reply(0x6A82));
    unsigned char flag = 0xEE;
    EXPECT_EQ(sle4442_is42(icdev, &flag), -0x6A82);
    EXPECT_EQ(flag, 1);
}

TEST_F(MemoryRules, Sle4428MovesChunks) {
    const auto chunk = [](std::uint8_t instruction, unsigned offset, unsigned length) {
        return Bytes{0xC0, instruction, 0x00, static_cast<std::uint8_t>(offset), static_cast<std::uint8_t>(offset >> 8),
                     static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)};
    };
    ASSERT_EQ(sle4428_read(icdev, 0, 257, out), 0);
    ASSERT_EQ(sle4428_read(icdev, 512, 512, out), 0);
    ASSERT_EQ(sle4428_probit_readdata(icdev, 1, 200, out), 0);
    EXPECT_EQ(payloads(), (std::vector<Bytes>{chunk(0x85, 0, 256), chunk(0x85, 256, 1), chunk(0x85, 512, 256),
                                              chunk(0x85, 768, 256), chunk(0x87, 1, 128), chunk(0x87, 129, 72)}));

    // Chunk i comes from data + 256 i.
    os.requests.clear();
    for (std::size_t i = 0; i < buffer.size(); ++i) buffer[i] = static_cast<unsigned char>(i / 256);
    ASSERT_EQ(sle4428_write(icdev, 100, 300, data), 0);
    ASSERT_EQ(payloads().size(), 2U);
    EXPECT_EQ(payloads()[0].back(), 0);
    EXPECT_EQ(payloads()[1], concat({chunk(0x86, 356, 44), Bytes(44, 1)}));

    // A failing second chunk stops the read; the first chunk stays delivered, at
    // 256 bytes a chunk even where the chunk is 128 positions.
    buffer.fill(0xEE);
    answer({{1, 2}});
    replies.push_back(make_reply(0x6581));
    EXPECT_EQ(sle4428_probit_readdata(icdev, 0, 300, out), -0x6581);
    EXPECT_EQ(buffer[0], 1);
    EXPECT_EQ(buffer[2], 0xEE);
    EXPECT_EQ(buffer[256], 0xEE);
    EXPECT_EQ(os.requests.size(), 2U + 2U);  // the write's two chunks and the read's

    // A chunk's reply may not spill into the next chunk's room.
    answer({Bytes(257, 7)});
    EXPECT_EQ(sle4428_read(icdev, 0, 512, out), -38);
}

TEST_F(MemoryRules, EraseReadsTheZoneBack) {
    Bytes erased(64, 0xFF);
    Bytes last_bad = erased;
    last_bad.back() = 0xFE;
    answer({{}, erased});
    EXPECT_EQ(at88sc102_ua1_clrdata(icdev), 0);
    EXPECT_EQ(payloads(), (std::vector<Bytes>{{0xC0, 0x71, 0x00}, {0xC0, 0x6F, 0x00, 0, 64}}));
    os.requests.clear();
    answer({{}, last_bad});
    EXPECT_EQ(at88sc102_ua2_clrdata(icdev, 2), -52);
    EXPECT_EQ(payloads(), (std::vector<Bytes>{{0xC0, 0x73, 0x00}, {0xC0, 0x70, 0x00, 0, 64}}));
    answer({{}, Bytes(63, 0xFF)});  // a short read-back is not an erased zone
    EXPECT_EQ(at88sc102_ua2_clrdata(icdev, 1), -52);

    // The erase is answered, the read-back meets silence.
    os.requests.clear();
    os.respond = [&](const Bytes&) { return os.requests.size() == 1 ? make_reply(0) : Bytes{}; };
    EXPECT_EQ(at88sc102_ua1_clrdata(icdev), -17);  // the read-back's link failure, not -52
}

TEST_F(MemoryRules, CodeWriteErasesThenWrites) {
    const unsigned char code[2] = {0x12, 0x34};
    ASSERT_EQ(wsc_1604(icdev, 6, 2, code), 0);
    EXPECT_EQ(payloads(), (std::vector<Bytes>{{0xC0, 0x93, 0x00, 6, 0x04, 0xC8, 0x00, 0x02},
                                              {0xC0, 0x92, 0x00, 6, 0x04, 0xC8, 0x00, 0x02, 0x12, 0x34}}));
    EXPECT_EQ(link::link_state().read_ms, 5000U);
    EXPECT_EQ(link::link_state().write_gap_ms, 10U);

    os.requests.clear();
    replies.push_back(make_reply(0x6581));
    EXPECT_EQ(wsc_1604(icdev, 0, 2, code), -0x6581);
    EXPECT_EQ(payloads(), (std::vector<Bytes>{{0xC0, 0x93, 0x00, 0, 0x00, 0x0A, 0x00, 0x02}}));
}

}  // namespace
}  // namespace qz::test
