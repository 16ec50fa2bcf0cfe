// DES: known answers through both paths and every export, the flags of
// des_block, overlapping buffers, lengths and refused arguments.
#include "reader/des.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "qz_32.h"

namespace {

using qz::reader::des_block;
using qz::reader::des_ecb;
using qz::reader::DesDirection;
using Block = std::array<unsigned char, 8>;
using Bytes = std::vector<unsigned char>;

constexpr unsigned char sentinel = 0xA5;

Block block_of(std::uint64_t value) {
    Block block;
    for (std::size_t i = 0; i < 8; ++i) block[i] = static_cast<unsigned char>(value >> (56 - 8 * i));
    return block;
}

Bytes random_bytes(std::mt19937& rng, std::size_t count) {
    Bytes bytes(count);
    for (auto& byte : bytes) byte = static_cast<unsigned char>(rng());
    return bytes;
}

Block random_block(std::mt19937& rng) {
    Block block;
    for (auto& byte : block) byte = static_cast<unsigned char>(rng());
    return block;
}

Block des_once(const Block& key, Block data, unsigned char mode) {
    des_block(data.data(), key.data(), mode);
    return data;
}

Bytes ecb(const Block& key, DesDirection direction, const Bytes& input) {
    Bytes output(qz::reader::des_padded_length(input.size()));
    des_ecb(key.data(), direction, input, output);
    return output;
}

// Rows of the NBS S-box validation set, one variable-plaintext and one variable-key row,
// and the FIPS 81 and textbook examples.
struct KnownAnswer {
    std::uint64_t key, plain, cipher;
};
constexpr KnownAnswer known_answers[]{
    {0x7CA110454A1A6E57, 0x01A1D6D039776742, 0x690F5B0D9A26939B},
    {0x4FB05E1515AB73A7, 0x072D43A077075292, 0x2F22E49BAB7CA1AC},
    {0x49E95D6D4CA229BF, 0x02FE55778117F12A, 0x5A6B612CC26CCE4A},
    {0x018310DC409B26D6, 0x1D9D5C5018F728C2, 0x5F4C038ED12B2E41},
    {0x1C587F1C13924FEF, 0x305532286D6F295A, 0x63FAC0D034D9F793},
    {0x0101010101010101, 0x8000000000000000, 0x95F8A5E5DD31D900},
    {0x8001010101010101, 0x0000000000000000, 0x95A8D72813DAA94D},
    {0x0123456789ABCDEF, 0x4E6F772069732074, 0x3FA40E8A984D4815},  // "Now is t"
    {0x133457799BBCDFF1, 0x0123456789ABCDEF, 0x85E813540F0AB405},
};

TEST(Des, KnownAnswersBothPathsBothWaysWithParityIgnored) {
    for (const KnownAnswer& answer : known_answers) {
        SCOPED_TRACE(::testing::Message() << std::hex << answer.key << " " << answer.plain);
        const Block key = block_of(answer.key), plain = block_of(answer.plain), cipher = block_of(answer.cipher);
        EXPECT_EQ(des_once(key, plain, qz::reader::des_mode_encrypt), cipher);
        EXPECT_EQ(des_once(key, cipher, qz::reader::des_mode_decrypt), plain);
        EXPECT_EQ(ecb(key, DesDirection::encrypt, Bytes(plain.begin(), plain.end())), Bytes(cipher.begin(), cipher.end()));
        EXPECT_EQ(ecb(key, DesDirection::decrypt, Bytes(cipher.begin(), cipher.end())), Bytes(plain.begin(), plain.end()));
        const Block flipped = block_of(answer.key ^ 0x0101010101010101);
        EXPECT_EQ(des_once(flipped, plain, qz::reader::des_mode_encrypt), cipher);
    }
}

// The exports against FIPS 81 ("Now is the time ") and two-key E-D-E known answers.
TEST(Des, ExportsGiveTheKnownAnswersAndWriteOnlyTheirLength) {
    using Export = int (*)(const unsigned char*, const unsigned char*, unsigned char, unsigned char*);
    const Bytes key{0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10};
    const std::string text = "Now is the time ";
    const Bytes plain(text.begin(), text.end());
    const Bytes single{0x3F, 0xA4, 0x0E, 0x8A, 0x98, 0x4D, 0x48, 0x15, 0x6A, 0x27, 0x17, 0x87, 0xAB, 0x88, 0x83, 0xF9};
    const Bytes triple{0xD8, 0x0A, 0x0D, 0x8B, 0x2B, 0xAE, 0x5E, 0x4E, 0x6A, 0x00, 0x94, 0x17, 0x1A, 0xBC, 0xFC, 0x27};
    const struct {
        Export encrypt, decrypt;
        const Bytes& cipher;
    } cases[]{{des_encrypt, des_decrypt, single}, {des3_encrypt, des3_decrypt, triple}};
    for (const auto& entry : cases)
        for (unsigned char length : {8, 16}) {
            Bytes out(20, sentinel);
            ASSERT_EQ(entry.encrypt(key.data(), plain.data(), length, out.data()), 0);
            EXPECT_TRUE(std::equal(entry.cipher.begin(), entry.cipher.begin() + length, out.begin()));
            EXPECT_EQ(out[length], sentinel);
            Bytes back(20, sentinel);
            ASSERT_EQ(entry.decrypt(key.data(), out.data(), length, back.data()), 0);
            EXPECT_TRUE(std::equal(plain.begin(), plain.begin() + length, back.begin()));
        }
    // Equal halves of the key: triple is single.
    Bytes same_halves = key;
    std::copy(key.begin(), key.begin() + 8, same_halves.begin() + 8);
    Bytes three(16), one(16);
    ASSERT_EQ(des3_encrypt(same_halves.data(), plain.data(), 16, three.data()), 0);
    ASSERT_EQ(des_encrypt(same_halves.data(), plain.data(), 16, one.data()), 0);
    EXPECT_EQ(three, one);
}

TEST(Des, ShortLengthGivesTheFrontOfTheZeroFilledBlock) {
    std::mt19937 rng(99);
    const Block key = random_block(rng);
    const Bytes data = random_bytes(rng, 16);
    for (unsigned char length = 1; length <= 16; ++length) {
        SCOPED_TRACE(static_cast<int>(length));
        const Bytes full = ecb(key, DesDirection::encrypt, Bytes(data.begin(), data.begin() + length));
        Bytes out(32, sentinel);
        ASSERT_EQ(des_encrypt(key.data(), data.data(), length, out.data()), 0);
        EXPECT_TRUE(std::equal(full.begin(), full.begin() + length, out.begin()));
        EXPECT_TRUE(std::all_of(out.begin() + length, out.end(), [](unsigned char b) { return b == sentinel; }));
    }
}

TEST(Des, BadArgumentsAreRefusedAndWriteNothing) {
    const Bytes key(16, 1), data(16, 2);
    using Export = int (*)(const unsigned char*, const unsigned char*, unsigned char, unsigned char*);
    for (Export operation : {des_encrypt, des_decrypt, des3_encrypt, des3_decrypt}) {
        Bytes out(32, sentinel);
        for (unsigned char length : {0, 17, 255}) EXPECT_EQ(operation(key.data(), data.data(), length, out.data()), -19);
        EXPECT_EQ(operation(nullptr, data.data(), 8, out.data()), -19);
        EXPECT_EQ(operation(key.data(), nullptr, 8, out.data()), -19);
        EXPECT_EQ(operation(key.data(), data.data(), 8, nullptr), -19);
        EXPECT_EQ(out, Bytes(32, sentinel));
    }
    using RfExport = int (*)(const unsigned char*, const unsigned char*, unsigned int, unsigned char*);
    for (RfExport operation : {rf_encrypt, rf_decrypt}) {
        Bytes out(8, sentinel);
        EXPECT_EQ(operation(nullptr, data.data(), 8, out.data()), -19);
        EXPECT_EQ(operation(key.data(), nullptr, 8, out.data()), -19);
        EXPECT_EQ(operation(key.data(), data.data(), 8, nullptr), -19);
        EXPECT_EQ(operation(nullptr, nullptr, 0, out.data()), 0) << "length 0 needs nothing";
        EXPECT_EQ(out, Bytes(8, sentinel));
    }
}

// des_block keeps its pre-output between calls: without load it goes on from
// there, without store it leaves the data alone, so three calls make triple DES.
TEST(DesBlock, LoadAndStoreFlagsChainCalls) {
    std::mt19937 rng(20240611);
    const Block k1 = random_block(rng), k2 = random_block(rng), plain = random_block(rng);
    const auto encrypt = [](const Block& key, const Block& data) {
        return des_once(key, data, qz::reader::des_mode_encrypt);
    };

    Block data = plain;
    des_block(data.data(), k1.data(), qz::reader::des_load | qz::reader::des_encipher);
    EXPECT_EQ(data, plain);
    des_block(data.data(), k2.data(), qz::reader::des_encipher | qz::reader::des_store);
    EXPECT_EQ(data, encrypt(k2, encrypt(k1, plain)));

    data = plain;
    des_block(data.data(), k1.data(), qz::reader::des_load | qz::reader::des_encipher);
    des_block(data.data(), k2.data(), 0);
    des_block(data.data(), k1.data(), qz::reader::des_encipher | qz::reader::des_store);
    EXPECT_EQ(data, encrypt(k1, des_once(k2, encrypt(k1, plain), qz::reader::des_mode_decrypt)));

    // The buffer exports leave a chain in progress alone.
    data = plain;
    des_block(data.data(), k1.data(), qz::reader::des_load | qz::reader::des_encipher);
    const Bytes noise = random_bytes(rng, 40);
    Bytes out(40);
    ASSERT_EQ(rf_encrypt(k2.data(), noise.data(), 40, out.data()), 0);
    des_block(data.data(), k1.data(), qz::reader::des_store);
    EXPECT_EQ(data, plain);
}

TEST(DesBuffer, MatchesBlockByBlockAndPadsWithZeros) {
    std::mt19937 rng(7);
    for (std::size_t length : {1u, 7u, 8u, 9u, 16u, 63u, 1000u, 100'003u}) {
        SCOPED_TRACE(length);
        const Block key = random_block(rng);
        const Bytes input = random_bytes(rng, length);
        Bytes expected = input;
        expected.resize(qz::reader::des_padded_length(length), 0);
        for (std::size_t at = 0; at < expected.size(); at += 8)
            des_block(&expected[at], key.data(), qz::reader::des_mode_encrypt);
        Bytes cipher(expected.size() + 8, sentinel);
        ASSERT_EQ(rf_encrypt(key.data(), input.data(), static_cast<unsigned>(length), cipher.data()), 0);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), cipher.begin()));
        EXPECT_EQ(cipher[expected.size()], sentinel);

        Bytes plain(expected.size());
        ASSERT_EQ(rf_decrypt(key.data(), cipher.data(), static_cast<unsigned>(plain.size()), plain.data()), 0);
        EXPECT_TRUE(std::equal(input.begin(), input.end(), plain.begin()));
        EXPECT_TRUE(std::all_of(plain.begin() + static_cast<std::ptrdiff_t>(length), plain.end(),
                                [](unsigned char b) { return b == 0; }));
    }
}

TEST(DesBuffer, OverlappingInputAndOutputGiveTheSeparateResult) {
    std::mt19937 rng(5);
    const Block key = random_block(rng);
    const Bytes input = random_bytes(rng, 61);
    const Bytes expected = ecb(key, DesDirection::encrypt, input);
    for (std::ptrdiff_t shift : {-9, -8, -3, 0, 3, 8, 9}) {
        SCOPED_TRACE(shift);
        Bytes buffer(200, 0);
        const std::size_t in_at = 80;
        const auto out_at = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(in_at) + shift);
        std::copy(input.begin(), input.end(), buffer.begin() + in_at);
        des_ecb(key.data(), DesDirection::encrypt, {buffer.data() + in_at, input.size()},
                {buffer.data() + out_at, expected.size()});
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), buffer.begin() + out_at));
    }
}

}  // namespace
