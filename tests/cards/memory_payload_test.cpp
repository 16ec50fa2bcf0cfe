// Every contact memory card export a row: the payload bytes it sends and what it
// hands over from the reply.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>

#include "card_fixture.h"
#include "qz_32.h"

namespace qz::test {
namespace {

const unsigned char key[8] = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88};
const Bytes reply{0xA1, 0xB2, 0xC3};

struct Row {
    const char* name;
    std::function<int(int, unsigned char*)> call;  // gets a buffer of 0xEE for its output
    Bytes payload;
    Bytes handed_over;  // what the output holds afterwards; the byte behind must stay 0xEE
};

class MemoryPayloads : public CardTest {
protected:
    void check(std::span<const Row> rows);
};

void MemoryPayloads::check(std::span<const Row> rows) {
    for (const Row& row : rows) {
        os.requests.clear();
        answer({reply});
        std::array<unsigned char, 64> out{};
        out.fill(0xEE);
        std::copy(key, key + 8, out.begin() + 40);  // a key handed in by the output buffer
        EXPECT_EQ(row.call(icdev, out.data()), 0) << row.name;
        EXPECT_EQ(payloads(), std::vector<Bytes>{row.payload}) << row.name;
        EXPECT_EQ(Bytes(out.begin(), out.begin() + static_cast<long>(row.handed_over.size())), row.handed_over)
            << row.name;
        EXPECT_EQ(out[row.handed_over.size()], 0xEE) << row.name;
    }
}

TEST_F(MemoryPayloads, RecordsSelectAndSle44) {
    unsigned char length = 0;
    const Row rows[] = {
        {"open_record", [](int d, unsigned char*) { return open_record(d); }, {0xD0, 0x01, 0x00}, {}},
        {"close_record", [](int d, unsigned char*) { return close_record(d); }, {0xD0, 0x02, 0x00}, {}},
        {"nt_record", [](int d, unsigned char* o) { return nt_record(d, 0x04030201, o); },
         {0xD0, 0x03, 0x00, 0x01, 0x02, 0x03, 0x04}, reply},
        {"contact_select", [](int d, unsigned char*) { return contact_select(d, 3); }, {0xC0, 0x3F, 0x00, 0x03}, {}},
        {"sle4442_read", [](int d, unsigned char* o) { return sle4442_read(d, 0x10, 0xF0, o); },
         {0xC0, 0x40, 0x00, 0x10, 0xF0, 0x00}, reply},
        {"sle4442_write", [](int d, unsigned char*) { return sle4442_write(d, 0xFD, 3, key); },
         {0xC0, 0x41, 0x00, 0xFD, 0x03, 0x00, 0x11, 0x22, 0x33}, {}},
        {"sle4442_pwd_check", [](int d, unsigned char*) { return sle4442_pwd_check(d, key); },
         {0xC0, 0x42, 0x00, 0x11, 0x22, 0x33}, {}},
        {"sle4442_pwd_read", [](int d, unsigned char* o) { return sle4442_pwd_read(d, o); }, {0xC0, 0x43, 0x00}, reply},
        {"sle4442_pwd_modify", [](int d, unsigned char*) { return sle4442_pwd_modify(d, key); },
         {0xC0, 0x44, 0x00, 0x11, 0x22, 0x33}, {}},
        {"sle4442_probit_read", [&length](int d, unsigned char* o) { return sle4442_probit_read(d, &length, o); },
         {0xC0, 0x45, 0x00}, reply},
        {"sle4442_probit_write", [](int d, unsigned char*) { return sle4442_probit_write(d, 30, 2, key); },
         {0xC0, 0x46, 0x00, 30, 0x02, 0x00, 0x11, 0x22}, {}},
        {"sle4442_errcount_read", [](int d, unsigned char* o) { return sle4442_errcount_read(d, o); },
         {0xC0, 0x47, 0x00}, reply},
        {"sle4428_pwd_modify", [](int d, unsigned char*) { return sle4428_pwd_modify(d, key); },
         {0xC0, 0x83, 0x00, 0x11, 0x22}, {}},
        {"sle4428_pwd_check", [](int d, unsigned char*) { return sle4428_pwd_check(d, key); },
         {0xC0, 0x84, 0x00, 0x11, 0x22}, {}},
        {"sle4428_read", [](int d, unsigned char* o) { return sle4428_read(d, 0x0302, 3, o); },
         {0xC0, 0x85, 0x00, 0x02, 0x03, 0x00, 0x03}, reply},
        {"sle4428_write", [](int d, unsigned char*) { return sle4428_write(d, 0x0102, 2, key); },
         {0xC0, 0x86, 0x00, 0x02, 0x01, 0x00, 0x02, 0x11, 0x22}, {}},
        {"sle4428_probit_readdata", [](int d, unsigned char* o) { return sle4428_probit_readdata(d, 5, 128, o); },
         {0xC0, 0x87, 0x00, 0x05, 0x00, 0x00, 0x80}, reply},
        {"sle4428_probit_writedata", [](int d, unsigned char*) { return sle4428_probit_writedata(d, 0x3FF, 1, key); },
         {0xC0, 0x88, 0x00, 0xFF, 0x03, 0x00, 0x01, 0x11}, {}},
        {"sle4428_errcount_read", [](int d, unsigned char* o) { return sle4428_errcount_read(d, o); },
         {0xC0, 0x89, 0x00}, reply},
    };
    check(rows);
    EXPECT_EQ(length, 3);
}

TEST_F(MemoryPayloads, At88sc102) {
    const auto only = [](std::uint8_t c) { return Bytes{0xC0, c, 0x00}; };
    const auto with_key = [](std::uint8_t c, int n) { return concat({{0xC0, c, 0x00}, Bytes(key, key + n)}); };
    const Row rows[] = {
        {"pwd_check", [](int d, unsigned char*) { return at88sc102_pwd_check(d, key); }, with_key(0x60, 2), {}},
        {"pwd_modify", [](int d, unsigned char*) { return at88sc102_pwd_modify(d, key); }, with_key(0x61, 2), {}},
        {"pwd_read", [](int d, unsigned char* o) { return at88sc102_pwd_read(d, o); }, only(0x62), reply},
        {"ua1_epwd_check", [](int d, unsigned char* o) { return at88sc102_ua1_epwd_check(d, o + 40); },
         concat({only(0x63), Bytes(key, key + 6)}), {}},
        {"ua2_epwd_check", [](int d, unsigned char*) { return at88sc102_ua2_epwd_check(d, key); }, with_key(0x64, 6), {}},
        {"ua1_epwd_modify", [](int d, unsigned char*) { return at88sc102_ua1_epwd_modify(d, key); }, with_key(0x65, 6), {}},
        {"ua2_epwd_modify", [](int d, unsigned char*) { return at88sc102_ua2_epwd_modify(d, key); }, with_key(0x66, 6), {}},
        {"ua1_epwd_read", [](int d, unsigned char* o) { return at88sc102_ua1_epwd_read(d, o); }, only(0x67), reply},
        {"ua2_epwd_read", [](int d, unsigned char* o) { return at88sc102_ua2_epwd_read(d, o); }, only(0x68), reply},
        {"pwd_errorcount", [](int d, unsigned char* o) { return at88sc102_pwd_errorcount(d, o); }, only(0x69), {0xA1}},
        {"ua2_fusecount", [](int d, unsigned char* o) { return at88sc102_ua2_fusecount(d, o); }, only(0x6A), {0xA1}},
        {"probit_clr 1", [](int d, unsigned char*) { return at88sc102_probit_clr(d, 1); }, only(0x6B), {}},
        {"probit_clr 4", [](int d, unsigned char*) { return at88sc102_probit_clr(d, 4); }, only(0x6E), {}},
        {"ua1_readdata", [](int d, unsigned char* o) { return at88sc102_ua1_readdata(d, 63, 64, o); },
         {0xC0, 0x6F, 0x00, 63, 64}, reply},
        {"ua2_readdata", [](int d, unsigned char* o) { return at88sc102_ua2_readdata(d, 0, 1, o); },
         {0xC0, 0x70, 0x00, 0, 1}, reply},
        {"Anafuse", [](int d, unsigned char*) { return at88sc102_Anafuse(d); }, only(0x74), {}},
        {"Anafuse_cancel", [](int d, unsigned char*) { return at88sc102_Anafuse_cancel(d); }, only(0x75), {}},
        {"ua1_modifydata", [](int d, unsigned char*) { return at88sc102_ua1_modifydata(d, 2, 3, key); },
         {0xC0, 0x76, 0x00, 2, 3, 0x11, 0x22, 0x33}, {}},
        {"ua2_modifydata 1", [](int d, unsigned char*) { return at88sc102_ua2_modifydata(d, 1, 2, 1, key); },
         {0xC0, 0x77, 0x00, 2, 1, 0x11}, {}},
        {"ua2_modifydata 2", [](int d, unsigned char*) { return at88sc102_ua2_modifydata(d, 2, 2, 1, key); },
         {0xC0, 0x78, 0x00, 2, 1, 0x11}, {}},
        {"fuse_issuerfuse", [](int d, unsigned char*) { return at88sc102_fuse_issuerfuse(d); }, only(0x79), {}},
        {"fuse_ec2enfuse", [](int d, unsigned char*) { return at88sc102_fuse_ec2enfuse(d); }, only(0x7A), {}},
        {"is102", [](int d, unsigned char* o) { return at88sc102_is102(d, o); }, only(0x7B), reply},
        {"issuer_write", [](int d, unsigned char*) { return at88sc102_issuer_write(d, key); }, with_key(0x7C, 8), {}},
        {"issuer_read", [](int d, unsigned char* o) { return at88sc102_issuer_read(d, o); }, only(0x7D), reply},
        {"protect_write", [](int d, unsigned char*) { return at88sc102_protect_write(d, key); }, with_key(0x7E, 8), {}},
        {"protect_read", [](int d, unsigned char* o) { return at88sc102_protect_read(d, o); }, only(0x7F), reply},
    };
    check(rows);

    // The zone 1 erase key check puts the reply over the key it was given.
    std::array<unsigned char, 8> given{1, 2, 3, 4, 5, 6, 7, 8};
    answer({reply});
    ASSERT_EQ(at88sc102_ua1_epwd_check(icdev, given.data()), 0);
    EXPECT_EQ(given, (std::array<unsigned char, 8>{0xA1, 0xB2, 0xC3, 4, 5, 6, 7, 8}));
}

TEST_F(MemoryPayloads, At88sc1604AndAt24c01a) {
    const Row rows[] = {
        {"srd_1604", [](int d, unsigned char* o) { return srd_1604(d, 1, 21, 1201, o); },
         {0xC0, 0x90, 0x00, 0x00, 21, 0x04, 0xB1}, reply},
        {"swr_1604", [](int d, unsigned char*) { return swr_1604(d, 2, 1227, 2, key); },
         {0xC0, 0x91, 0x00, 0x04, 0xCB, 0x00, 0x02, 0x11, 0x22}, {}},
        {"csc_1604", [](int d, unsigned char*) { return csc_1604(d, 3, 2, key); },
         {0xC0, 0x94, 0x00, 0x03, 0x05, 0xCB, 0x00, 0x02, 0x11, 0x22}, {}},
        {"cesc_1604", [](int d, unsigned char*) { return cesc_1604(d, 4, 2, key); },
         {0xC0, 0x95, 0x00, 0x04, 0x06, 0xD2, 0x00, 0x02, 0x11, 0x22}, {}},
        {"fakefus_1604", [](int d, unsigned char*) { return fakefus_1604(d, 1); }, {0xC0, 0x96, 0x00, 0x01}, {}},
        {"psnl_1604", [](int d, unsigned char*) { return psnl_1604(d); }, {0xC0, 0x97, 0x00}, {}},
        {"at24c01a_read", [](int d, unsigned char* o) { return at24c01a_read(d, 120, 7, o); },
         {0xC0, 0x90, 0x00, 7, 120}, reply},
        {"at24c01a_write", [](int d, unsigned char*) { return at24c01a_write(d, 5, 2, key); },
         {0xC0, 0x91, 0x00, 2, 5, 0x11, 0x22}, {}},
    };
    check(rows);
}

}  // namespace
}  // namespace qz::test
