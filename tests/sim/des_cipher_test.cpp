#include "sim/models/pinpad/des_cipher.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

DesBlock block_of(std::string_view text) {
    const Bytes bytes = hex(text);
    DesBlock block{};
    std::copy(bytes.begin(), bytes.end(), block.begin());
    return block;
}

TEST(DesCipher, KnownAnswers) {
    const Bytes key = hex("13 34 57 79 9B BC DF F1");
    EXPECT_EQ(des_encrypt(block_of("01 23 45 67 89 AB CD EF"), std::span<const std::uint8_t, 8>(key.data(), 8)),
              block_of("85 E8 13 54 0F 0A B4 05"));
    const Bytes zero_key(8, 0x00);
    EXPECT_EQ(des_encrypt(DesBlock{}, std::span<const std::uint8_t, 8>(zero_key.data(), 8)),
              block_of("8C A6 4D E9 C1 B1 23 A7"));
}

TEST(DesCipher, BlocksRoundTripAndTripleWithEqualHalvesIsSingle) {
    const Bytes plain = hex("00 11 22 33 44 55 66 77 88 99 AA BB CC DD EE FF");
    const Bytes key8 = hex("0B 16 2C 58 B0 61 C2 85");
    const Bytes key16 = hex("3C 5A 69 96 A5 C3 0F F0 12 34 56 78 9A BC DE F0");
    for (const Bytes& key : {key8, key16}) {
        Bytes data = plain;
        encipher_blocks(data, key);
        EXPECT_NE(data, plain);
        decipher_blocks(data, key);
        EXPECT_EQ(data, plain);
    }
    Bytes single = plain;
    Bytes triple = plain;
    encipher_blocks(single, key8);
    Bytes doubled = key8;
    doubled.insert(doubled.end(), key8.begin(), key8.end());
    encipher_blocks(triple, doubled);
    EXPECT_EQ(triple, single);
}

TEST(DesCipher, OnlyWholeBlocksChangeAndKeysAreEightOrSixteenBytes) {
    Bytes data = hex("01 02 03 04 05 06 07 08 AA BB");
    encipher_blocks(data, hex("01 01 01 01 01 01 01 01"));
    EXPECT_EQ(Bytes(data.end() - 2, data.end()), hex("AA BB"));
    EXPECT_THROW(encipher_blocks(data, hex("01 02 03")), std::logic_error);
}

}  // namespace
}  // namespace qz::sim
