// The library's contact memory card exports against the simulated chips of the
// memory card profile: codes that count down and lock, protected bytes.
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
constexpr int code_wrong(int tries_left) { return -(0x63C0 | tries_left); }

constexpr unsigned char sle4442_slot = 1;

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

}  // namespace
}  // namespace qz::test
