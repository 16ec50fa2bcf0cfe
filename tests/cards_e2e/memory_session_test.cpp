// The library's contact memory card exports against the simulated chips of the
// memory card profile: codes that count down and lock, protected bytes, erases.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "qz_32.h"
#include "support/simulated_terminal.h"

namespace qz::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int code_required = -0x6982;
constexpr int code_blocked = -0x6983;
constexpr int refused = -0x6985;
constexpr int wrong_card = -0x6981;
constexpr int code_wrong(int tries_left) { return -(0x63C0 | tries_left); }

enum Slot : unsigned char { at24c01a_slot, sle4442_slot, sle4428_slot, at88sc102_slot, at88sc1604_slot };

class MemorySession : public ::testing::Test {
protected:
    Bytes read4442(unsigned char offset, unsigned short length) {
        Bytes out(length);
        EXPECT_EQ(sle4442_read(icdev, offset, length, out.data()), 0);
        return out;
    }
    unsigned char tries(int (*read)(int, unsigned char*)) {
        unsigned char left = 0xEE;
        EXPECT_EQ(read(icdev, &left), 0);
        return left;
    }

    SimulatedTerminal simulated{shipped_scenario("memory_cards.json")};
    int icdev = simulated.icdev;
};

TEST_F(MemorySession, Sle4442PscCountsDownAndLocks) {
    ASSERT_GT(icdev, 1);
    ASSERT_EQ(contact_select(icdev, sle4442_slot), 0);
    unsigned char type = 0;
    ASSERT_EQ(contact_verify(icdev, &type), 0);
    EXPECT_EQ(type, 4);
    const unsigned char right[3] = {0x12, 0x34, 0x56};
    const unsigned char wrong[3] = {0x12, 0x34, 0x57};
    const unsigned char data[3] = {'a', 'b', 'c'};

    EXPECT_EQ(sle4442_write(icdev, 100, 3, data), code_required);
    EXPECT_EQ(sle4442_pwd_check(icdev, wrong), code_wrong(2));
    EXPECT_EQ(tries(sle4442_errcount_read), 2);
    ASSERT_EQ(sle4442_pwd_check(icdev, right), 0);
    EXPECT_EQ(tries(sle4442_errcount_read), 3);  // a right PSC fills the counter again
    ASSERT_EQ(sle4442_write(icdev, 100, 3, data), 0);
    EXPECT_EQ(read4442(100, 3), Bytes(data, data + 3));

    // Bytes 0 to 3 are protected: they refuse a change, and only they show as protected.
    EXPECT_EQ(sle4442_write(icdev, 2, 3, data), refused);
    EXPECT_EQ(read4442(4, 1), Bytes{0xFF});
    std::array<unsigned char, 8> bits{};
    unsigned char length = 0;
    ASSERT_EQ(sle4442_probit_read(icdev, &length, bits.data()), 0);
    EXPECT_EQ(length, 4);
    EXPECT_EQ(bits[0], 0xF0);
    EXPECT_EQ(bits[3], 0xFF);

    // Three wrong PSCs lock the card for good, through power cycles.
    for (int left = 2; left >= 0; --left) EXPECT_EQ(sle4442_pwd_check(icdev, wrong), code_wrong(left));
    EXPECT_EQ(sle4442_pwd_check(icdev, right), code_blocked);
    ASSERT_EQ(contact_select(icdev, sle4442_slot), 0);
    EXPECT_EQ(sle4442_pwd_check(icdev, right), code_blocked);
    EXPECT_EQ(sle4442_write(icdev, 100, 3, data), code_required);
    EXPECT_EQ(tries(sle4442_errcount_read), 0);
}

TEST_F(MemorySession, Sle4428ChunksAndProtection) {
    ASSERT_EQ(contact_select(icdev, sle4428_slot), 0);
    unsigned char flag = 0xEE;
    ASSERT_EQ(sle4428_is28(icdev, &flag), 0);
    EXPECT_EQ(flag, 0);
    ASSERT_EQ(sle4442_is42(icdev, &flag), 0);
    EXPECT_EQ(flag, 1);
    const unsigned char psc[2] = {0x12, 0x34};
    ASSERT_EQ(sle4428_pwd_check(icdev, psc), 0);

    // 300 bytes across a chunk boundary, written and read back.
    Bytes written(512);
    for (std::size_t i = 0; i < written.size(); ++i) written[i] = static_cast<std::uint8_t>(i * 7);
    ASSERT_EQ(sle4428_write(icdev, 200, 300, written.data()), 0);
    Bytes back(512, 0xEE);
    ASSERT_EQ(sle4428_read(icdev, 200, 300, back.data()), 0);
    EXPECT_EQ(Bytes(back.begin(), back.begin() + 300), Bytes(written.begin(), written.begin() + 300));

    // Write and protect; a protected byte refuses a change but takes its own value.
    const unsigned char word[2] = {'Q', 'Z'};
    const unsigned char other[2] = {'X', 'Z'};
    EXPECT_EQ(sle4428_write(icdev, 32, 2, other), refused);
    EXPECT_EQ(sle4428_write(icdev, 32, 2, word), 0);
    ASSERT_EQ(sle4428_probit_writedata(icdev, 499, 1, word), 0);
    EXPECT_EQ(sle4428_write(icdev, 499, 1, other), refused);
    std::array<unsigned char, 256> pairs{};
    ASSERT_EQ(sle4428_probit_readdata(icdev, 498, 2, pairs.data()), 0);
    EXPECT_EQ((Bytes(pairs.begin(), pairs.begin() + 4)), (Bytes{written[298], 0, 'Q', 1}));

    const unsigned char wrong[2] = {0, 0};
    for (int left = 7; left >= 0; --left) EXPECT_EQ(sle4428_pwd_check(icdev, wrong), code_wrong(left));
    EXPECT_EQ(sle4428_pwd_check(icdev, psc), code_blocked);
}

TEST_F(MemorySession, At88sc102EraseNeedsItsKey) {
    ASSERT_EQ(contact_select(icdev, at88sc102_slot), 0);
    unsigned char type = 0;
    ASSERT_EQ(contact_verify(icdev, &type), 0);
    EXPECT_EQ(type, 5);
    const unsigned char code[2] = {0xF0, 0xF0};
    unsigned char key1[6] = {1, 2, 3, 4, 5, 6};
    const unsigned char zeros[2] = {0x00, 0x0F};

    EXPECT_EQ(at88sc102_ua1_modifydata(icdev, 0, 2, zeros), code_required);
    ASSERT_EQ(at88sc102_pwd_check(icdev, code), 0);
    ASSERT_EQ(at88sc102_ua1_modifydata(icdev, 0, 2, zeros), 0);  // a write only clears bits
    std::array<unsigned char, 64> zone{};
    ASSERT_EQ(at88sc102_ua1_readdata(icdev, 0, 3, zone.data()), 0);
    EXPECT_EQ((Bytes(zone.begin(), zone.begin() + 3)), (Bytes{0x00, 'O' & 0x0F, 'N'}));

    EXPECT_EQ(at88sc102_ua1_clrdata(icdev), code_required);
    ASSERT_EQ(at88sc102_ua1_epwd_check(icdev, key1), 0);
    ASSERT_EQ(at88sc102_ua1_clrdata(icdev), 0);
    ASSERT_EQ(at88sc102_ua1_readdata(icdev, 0, 64, zone.data()), 0);
    EXPECT_EQ(Bytes(zone.begin(), zone.end()), Bytes(64, 0xFF));

    // Zone 2 with the EC2EN fuse: each erase counts down.
    unsigned char key2[6] = {0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F};
    ASSERT_EQ(at88sc102_fuse_ec2enfuse(icdev), 0);
    ASSERT_EQ(at88sc102_ua2_epwd_check(icdev, key2), 0);
    ASSERT_EQ(at88sc102_ua2_clrdata(icdev, 1), 0);
    EXPECT_EQ(tries(at88sc102_ua2_fusecount), 127);

    // After the issuer fuse the issuer area is fixed.
    ASSERT_EQ(at88sc102_fuse_issuerfuse(icdev), 0);
    const unsigned char issuer[8] = {'I', 'S', 'S', 'U', 'E', 'R', 0, 1};
    EXPECT_EQ(at88sc102_issuer_write(icdev, issuer), refused);
    EXPECT_EQ(sle4442_read(icdev, 0, 1, zone.data()), wrong_card);
}

}  // namespace
}  // namespace qz::test
