// The library's contactless memory card exports against the simulated chips:
// keys that are refused, access bits and value arithmetic.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "qz_32.h"
#include "support/simulated_terminal.h"

namespace qz::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int wrong_key = -0x6300;
constexpr int needs_key = -0x6982;
constexpr int refused = -0x6985;
constexpr int no_card = -0x6401;
constexpr unsigned char key_a = 0x60;
constexpr unsigned char key_b = 0x61;

const Bytes sector_key_a{0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5};
const Bytes sector_key_b{0xB0, 0xB1, 0xB2, 0xB3, 0xB4, 0xB5};

TEST(FieldSession, SectorCardKeysAccessBitsAndHalt) {
    SimulatedTerminal sim(shipped_scenario("sector_card.json"));
    const int d = sim.icdev;
    std::array<unsigned char, 16> serial{};
    ASSERT_EQ(rf_card(d, 0, serial.data()), 0);
    EXPECT_EQ(Bytes(serial.begin(), serial.begin() + 4), (Bytes{0x5A, 0x32, 0x51, 0x01}));

    std::array<char, 33> text{};
    EXPECT_EQ(rf_authentication_key(d, key_a, 1, sector_key_b.data()), wrong_key);
    EXPECT_EQ(rf_read_hex(d, 4, text.data()), needs_key);
    ASSERT_EQ(rf_authentication_key(d, key_a, 1, sector_key_a.data()), 0);
    ASSERT_EQ(rf_read_hex(d, 4, text.data()), 0);
    EXPECT_STREQ(text.data(), "515A333220534543544F522043415244");  // "QZ32 SECTOR CARD"
    EXPECT_EQ(rf_read(d, 8, serial.data()), needs_key);  // another sector
    EXPECT_EQ(rf_write_hex(d, 6, "00000000000000000000000000000000"), refused);  // read-only block
    EXPECT_EQ(rf_write(d, 0, serial.data()), refused);                          // manufacturer block
    ASSERT_EQ(rf_read(d, 7, serial.data()), 0);  // trailer: keys hidden, access bits shown
    EXPECT_EQ(Bytes(serial.begin(), serial.end()),
              (Bytes{0, 0, 0, 0, 0, 0, 0x1D, 0x27, 0x8E, 0x69, 0, 0, 0, 0, 0, 0}));

    ASSERT_EQ(rf_halt(d), 0);
    EXPECT_EQ(rf_card(d, 0, serial.data()), no_card);
    EXPECT_EQ(rf_read(d, 4, serial.data()), no_card);
    EXPECT_EQ(rf_card(d, 1, serial.data()), 0);
    EXPECT_EQ(rf_read(d, 4, serial.data()), needs_key);  // a new selection forgets the key
}

TEST(FieldSession, ValueBlockArithmeticAndItsRights) {
    SimulatedTerminal sim(shipped_scenario("sector_card.json"));
    const int d = sim.icdev;
    std::array<unsigned char, 16> serial{};
    ASSERT_EQ(rf_card(d, 0, serial.data()), 0);
    ASSERT_EQ(rf_authentication_key(d, key_a, 1, sector_key_a.data()), 0);
    unsigned int value = 0;
    ASSERT_EQ(rf_readval(d, 5, &value), 0);
    EXPECT_EQ(value, 100u);
    EXPECT_EQ(rf_increment(d, 5, 1), refused);  // increments need key B here
    EXPECT_EQ(rf_decrement(d, 5, 40), 0);       // decrements take either key
    ASSERT_EQ(rf_authentication_key(d, key_b, 1, sector_key_b.data()), 0);
    EXPECT_EQ(rf_increment(d, 5, 15), 0);
    EXPECT_EQ(rf_decrement(d, 5, 76), -51);
    ASSERT_EQ(rf_readval(d, 5, &value), 0);
    EXPECT_EQ(value, 75u);
    EXPECT_EQ(rf_decrement(d, 5, 75), 0);
    ASSERT_EQ(rf_readval(d, 5, &value), 0);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(rf_readval(d, 4, &value), -19);  // plain data

    ASSERT_EQ(rf_initval(d, 4, 0x7FFFFFFE), 0);
    EXPECT_EQ(rf_increment(d, 4, 2), -50);
    ASSERT_EQ(rf_restore(d, 5), 0);
    ASSERT_EQ(rf_transfer(d, 4), 0);
    ASSERT_EQ(rf_readval(d, 4, &value), 0);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(rf_transfer(d, 4), refused);  // nothing left to transfer
}

}  // namespace
}  // namespace qz::test
