#include "reader/des.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <thread>
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

// ---- Known answers --------------------------------------------------------------

struct KnownAnswer {
    std::uint64_t key;
    std::uint64_t plain;
    std::uint64_t cipher;
};

void PrintTo(const KnownAnswer& v, std::ostream* os) {
    *os << std::hex << std::uppercase << "key " << v.key << " plain " << v.plain << " cipher " << v.cipher;
}

// NBS validation tables: variable plaintext under key 0101010101010101 (one bit set
// per plaintext), variable key with plaintext 0 (one key bit set besides parity),
// the S-box table, and the FIPS 81 and textbook examples.
constexpr std::uint64_t neutral_key = 0x0101010101010101;

constexpr std::array<std::uint64_t, 64> variable_plaintext_ciphers{
    0x95F8A5E5DD31D900, 0xDD7F121CA5015619, 0x2E8653104F3834EA, 0x4BD388FF6CD81D4F, 0x20B9E767B2FB1456,
    0x55579380D77138EF, 0x6CC5DEFAAF04512F, 0x0D9F279BA5D87260, 0xD9031B0271BD5A0A, 0x424250B37C3DD951,
    0xB8061B7ECD9A21E5, 0xF15D0F286B65BD28, 0xADD0CC8D6E5DEBA1, 0xE6D5F82752AD63D1, 0xECBFE3BD3F591A5E,
    0xF356834379D165CD, 0x2B9F982F20037FA9, 0x889DE068A16F0BE6, 0xE19E275D846A1298, 0x329A8ED523D71AEC,
    0xE7FCE22557D23C97, 0x12A9F5817FF2D65D, 0xA484C3AD38DC9C19, 0xFBE00A8A1EF8AD72, 0x750D079407521363,
    0x64FEED9C724C2FAF, 0xF02B263B328E2B60, 0x9D64555A9A10B852, 0xD106FF0BED5255D7, 0xE1652C6B138C64A5,
    0xE428581186EC8F46, 0xAEB5F5EDE22D1A36, 0xE943D7568AEC0C5C, 0xDF98C8276F54B04B, 0xB160E4680F6C696F,
    0xFA0752B07D9C4AB8, 0xCA3A2B036DBC8502, 0x5E0905517BB59BCF, 0x814EEB3B91D90726, 0x4D49DB1532919C9F,
    0x25EB5FC3F8CF0621, 0xAB6A20C0620D1C6F, 0x79E90DBC98F92CCA, 0x866ECEDD8072BB0E, 0x8B54536F2F3E64A8,
    0xEA51D3975595B86B, 0xCAFFC6AC4542DE31, 0x8DD45A2DDF90796C, 0x1029D55E880EC2D0, 0x5D86CB23639DBEA9,
    0x1D1CA853AE7C0C5F, 0xCE332329248F3228, 0x8405D1ABE24FB942, 0xE643D78090CA4207, 0x48221B9937748A23,
    0xDD7C0BBD61FAFD54, 0x2FBC291A570DB5C4, 0xE07C30D7E4E26E12, 0x0953E2258E8E90A1, 0x5B711BC4CEEBF2EE,
    0xCC083F1E6D9E85F6, 0xD2FD8867D50D2DFE, 0x06E7EA22CE92708F, 0x166B40B44ABA4BD6};

// By key bit, skipping the parity bits 8, 16, ..., 64.
constexpr std::array<std::uint64_t, 56> variable_key_ciphers{
    0x95A8D72813DAA94D, 0x0EEC1487DD8C26D5, 0x7AD16FFB79C45926, 0xD3746294CA6A6CF3, 0x809F5F873C1FD761,
    0xC02FAFFEC989D1FC, 0x4615AA1D33E72F10, 0x2055123350C00858, 0xDF3B99D6577397C8, 0x31FE17369B5288C9,
    0xDFDD3CC64DAE1642, 0x178C83CE2B399D94, 0x50F636324A9B7F80, 0xA8468EE3BC18F06D, 0xA2DC9E92FD3CDE92,
    0xCAC09F797D031287, 0x90BA680B22AEB525, 0xCE7A24F350E280B6, 0x882BFF0AA01A0B87, 0x25610288924511C2,
    0xC71516C29C75D170, 0x5199C29A52C9F059, 0xC22F0A294A71F29F, 0xEE371483714C02EA, 0xA81FBD448F9E522F,
    0x4F644C92E192DFED, 0x1AFA9A66A6DF92AE, 0xB3C1CC715CB879D8, 0x19D032E64AB0BD8B, 0x3CFAA7A7DC8720DC,
    0xB7265F7F447AC6F3, 0x9DB73B3C0D163F54, 0x8181B65BABF4A975, 0x93C9B64042EAA240, 0x5570530829705592,
    0x8638809E878787A0, 0x41B9A79AF79AC208, 0x7A9BE42F2009A892, 0x29038D56BA6D2745, 0x5495C6ABF1E5DF51,
    0xAE13DBD561488933, 0x024D1FFA8904E389, 0xD1399712F99BF02E, 0x14C1D7C1CFFEC79E, 0x1DE5279DAE3BED6F,
    0xE941A33F85501303, 0xDA99DBBC9A03F379, 0xB7FC92F91D8E92E9, 0xAE8E5CAA3CA04E85, 0x9CC62DF43B6EED74,
    0xD863DBB5C59A91A0, 0xA1AB2190545B91D7, 0x0875041E64C570F7, 0x5A594528BEBEF1CC, 0xFCDB3291DE21F0C0,
    0x869EFD7F9F265A09};

constexpr KnownAnswer substitution_table[]{
    {0x7CA110454A1A6E57, 0x01A1D6D039776742, 0x690F5B0D9A26939B},
    {0x0131D9619DC1376E, 0x5CD54CA83DEF57DA, 0x7A389D10354BD271},
    {0x07A1133E4A0B2686, 0x0248D43806F67172, 0x868EBB51CAB4599A},
    {0x3849674C2602319E, 0x51454B582DDF440A, 0x7178876E01F19B2A},
    {0x04B915BA43FEB5B6, 0x42FD443059577FA2, 0xAF37FB421F8C4095},
    {0x0113B970FD34F2CE, 0x059B5E0851CF143A, 0x86A560F10EC6D85B},
    {0x0170F175468FB5E6, 0x0756D8E0774761D2, 0x0CD3DA020021DC09},
    {0x43297FAD38E373FE, 0x762514B829BF486A, 0xEA676B2CB7DB2B7A},
    {0x07A7137045DA2A16, 0x3BDD119049372802, 0xDFD64A815CAF1A0F},
    {0x04689104C2FD3B2F, 0x26955F6835AF609A, 0x5C513C9C4886C088},
    {0x37D06BB516CB7546, 0x164D5E404F275232, 0x0A2AEEAE3FF4AB77},
    {0x1F08260D1AC2465E, 0x6B056E18759F5CCA, 0xEF1BF03E5DFA575A},
    {0x584023641ABA6176, 0x004BD6EF09176062, 0x88BF0DB6D70DEE56},
    {0x025816164629B007, 0x480D39006EE762F2, 0xA1F9915541020B56},
    {0x49793EBC79B3258F, 0x437540C8698F3CFA, 0x6FBF1CAFCFFD0556},
    {0x4FB05E1515AB73A7, 0x072D43A077075292, 0x2F22E49BAB7CA1AC},
    {0x49E95D6D4CA229BF, 0x02FE55778117F12A, 0x5A6B612CC26CCE4A},
    {0x018310DC409B26D6, 0x1D9D5C5018F728C2, 0x5F4C038ED12B2E41},
    {0x1C587F1C13924FEF, 0x305532286D6F295A, 0x63FAC0D034D9F793},
    {0x0123456789ABCDEF, 0x4E6F772069732074, 0x3FA40E8A984D4815},  // "Now is t"
    {0x133457799BBCDFF1, 0x0123456789ABCDEF, 0x85E813540F0AB405},
};

std::vector<KnownAnswer> known_answers() {
    std::vector<KnownAnswer> all;
    for (std::size_t bit = 0; bit < 64; ++bit)
        all.push_back({neutral_key, std::uint64_t{1} << (63 - bit), variable_plaintext_ciphers[bit]});
    std::size_t entry = 0;
    for (std::size_t bit = 0; bit < 64; ++bit)
        if (bit % 8 != 7)
            all.push_back({neutral_key | (std::uint64_t{1} << (63 - bit)), 0, variable_key_ciphers[entry++]});
    all.insert(all.end(), std::begin(substitution_table), std::end(substitution_table));
    return all;
}

class DesKnownAnswer : public ::testing::TestWithParam<KnownAnswer> {};

TEST_P(DesKnownAnswer, BothPathsBothWays) {
    const Block key = block_of(GetParam().key);
    const Block plain = block_of(GetParam().plain);
    const Block cipher = block_of(GetParam().cipher);
    EXPECT_EQ(des_once(key, plain, qz::reader::des_mode_encrypt), cipher);
    EXPECT_EQ(des_once(key, cipher, qz::reader::des_mode_decrypt), plain);
    EXPECT_EQ(ecb(key, DesDirection::encrypt, Bytes(plain.begin(), plain.end())), Bytes(cipher.begin(), cipher.end()));
    EXPECT_EQ(ecb(key, DesDirection::decrypt, Bytes(cipher.begin(), cipher.end())), Bytes(plain.begin(), plain.end()));
    // The parity bits of the key are ignored.
    const Block flipped = block_of(GetParam().key ^ 0x0101010101010101);
    EXPECT_EQ(des_once(flipped, plain, qz::reader::des_mode_encrypt), cipher);
}

INSTANTIATE_TEST_SUITE_P(NbsTables, DesKnownAnswer, ::testing::ValuesIn(known_answers()));

TEST(DesBuffer, Fips81ElectronicCodeBookExample) {
    const Block key = block_of(0x0123456789ABCDEF);
    const std::string text = "Now is the time for all ";
    const Bytes cipher{0x3F, 0xA4, 0x0E, 0x8A, 0x98, 0x4D, 0x48, 0x15, 0x6A, 0x27, 0x17, 0x87,
                       0xAB, 0x88, 0x83, 0xF9, 0x89, 0x3D, 0x51, 0xEC, 0x4B, 0x56, 0x3B, 0x53};
    EXPECT_EQ(ecb(key, DesDirection::encrypt, Bytes(text.begin(), text.end())), cipher);
    EXPECT_EQ(ecb(key, DesDirection::decrypt, cipher), Bytes(text.begin(), text.end()));
}

// ---- Flags of des_block -----------------------------------------------------------

class DesBlockFlags : public ::testing::Test {
protected:
    std::mt19937 rng{20240611};
    Block k1 = random_block(rng);
    Block k2 = random_block(rng);
    Block plain = random_block(rng);
};

TEST_F(DesBlockFlags, CallWithoutStoreLeavesDataAndCallWithoutLoadContinues) {
    Block data = plain;
    des_block(data.data(), k1.data(), qz::reader::des_load | qz::reader::des_encipher);
    EXPECT_EQ(data, plain);
    des_block(data.data(), k2.data(), qz::reader::des_encipher | qz::reader::des_store);
    // One pre-output handed on without FP and IP: the two calls are two whole encryptions.
    const Block expected =
        des_once(k2, des_once(k1, plain, qz::reader::des_mode_encrypt), qz::reader::des_mode_encrypt);
    EXPECT_EQ(data, expected);
}

TEST_F(DesBlockFlags, EncipherThenContinueDecipheringUndoesIt) {
    Block data = plain;
    des_block(data.data(), k1.data(), qz::reader::des_load | qz::reader::des_encipher);
    des_block(data.data(), k1.data(), qz::reader::des_store);
    EXPECT_EQ(data, plain);
}

TEST_F(DesBlockFlags, ChainOfThreeCallsIsTripleDes) {
    Block chained = plain;
    des_block(chained.data(), k1.data(), qz::reader::des_load | qz::reader::des_encipher);
    des_block(chained.data(), k2.data(), 0);
    des_block(chained.data(), k1.data(), qz::reader::des_encipher | qz::reader::des_store);

    std::array<unsigned char, 16> key{};
    std::copy(k1.begin(), k1.end(), key.begin());
    std::copy(k2.begin(), k2.end(), key.begin() + 8);
    Block whole{};
    ASSERT_EQ(des3_encrypt(key.data(), plain.data(), 8, whole.data()), 0);
    EXPECT_EQ(chained, whole);
}

TEST_F(DesBlockFlags, CallWithoutLoadContinuesFromACompleteOperation) {
    Block first = plain;
    des_block(first.data(), k1.data(), qz::reader::des_mode_encrypt);
    // Sixteen more rounds from the stored pre-output, then FP: a second encryption.
    Block second{};
    des_block(second.data(), k2.data(), qz::reader::des_encipher | qz::reader::des_store);
    EXPECT_EQ(second, des_once(k2, first, qz::reader::des_mode_encrypt));
}

TEST_F(DesBlockFlags, BufferOperationsLeaveTheWorkAreaAlone) {
    Block data = plain;
    des_block(data.data(), k1.data(), qz::reader::des_load | qz::reader::des_encipher);
    const Bytes noise = random_bytes(rng, 40);
    Bytes out(40);
    ASSERT_EQ(rf_encrypt(k2.data(), noise.data(), 40, out.data()), 0);
    ASSERT_EQ(rf_decrypt(k2.data(), noise.data(), 40, out.data()), 0);
    des_block(data.data(), k1.data(), qz::reader::des_store);
    EXPECT_EQ(data, plain);
}

// ---- The two paths ------------------------------------------------------------------

TEST(DesPaths, BufferPathMatchesBlockByBlockOnRandomData) {
    std::mt19937 rng(7);
    for (std::size_t length : {1u, 7u, 8u, 9u, 15u, 16u, 17u, 63u, 64u, 1000u, 4099u}) {
        SCOPED_TRACE(length);
        const Block key = random_block(rng);
        const Bytes input = random_bytes(rng, length);
        Bytes padded = input;
        padded.resize(qz::reader::des_padded_length(length), 0);
        for (const auto& [direction, mode] : {std::pair{DesDirection::encrypt, qz::reader::des_mode_encrypt},
                                             std::pair{DesDirection::decrypt, qz::reader::des_mode_decrypt}}) {
            Bytes expected = padded;
            for (std::size_t at = 0; at < expected.size(); at += 8) des_block(&expected[at], key.data(), mode);
            EXPECT_EQ(ecb(key, direction, input), expected);
        }
    }
}

TEST(DesPaths, RoundTripOnRandomBuffers) {
    std::mt19937 rng(11);
    for (int trial = 0; trial < 50; ++trial) {
        const Block key = random_block(rng);
        const Bytes plain = random_bytes(rng, 8 * (1 + rng() % 64));
        EXPECT_EQ(ecb(key, DesDirection::decrypt, ecb(key, DesDirection::encrypt, plain)), plain);
    }
}

TEST(DesPaths, OverlappingInputAndOutputGiveTheSeparateResult) {
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

// ---- The des_ and des3_ exports -------------------------------------------------------

using DesExport = int (*)(const unsigned char*, const unsigned char*, unsigned char, unsigned char*);

class DesFamily : public ::testing::Test {
protected:
    std::mt19937 rng{99};
    std::array<unsigned char, 16> key = [this] {
        std::array<unsigned char, 16> k;
        for (auto& byte : k) byte = static_cast<unsigned char>(rng());
        return k;
    }();
    Bytes data = random_bytes(rng, 16);
    Bytes out = Bytes(32, sentinel);
};

TEST_F(DesFamily, LengthZeroOrAboveSixteenIsRefusedAndOutUntouched) {
    for (DesExport operation : {des_encrypt, des_decrypt, des3_encrypt, des3_decrypt})
        for (unsigned char length : {0, 17, 255}) {
            SCOPED_TRACE(static_cast<int>(length));
            EXPECT_EQ(operation(key.data(), data.data(), length, out.data()), -19);
            EXPECT_EQ(out, Bytes(32, sentinel));
        }
}

TEST_F(DesFamily, NullPointersAreRefused) {
    for (DesExport operation : {des_encrypt, des_decrypt, des3_encrypt, des3_decrypt}) {
        EXPECT_EQ(operation(nullptr, data.data(), 8, out.data()), -19);
        EXPECT_EQ(operation(key.data(), nullptr, 8, out.data()), -19);
        EXPECT_EQ(operation(key.data(), data.data(), 8, nullptr), -19);
    }
}

TEST_F(DesFamily, EncryptMatchesKnownAnswerOnBothBlocks) {
    const Block k = block_of(0x0123456789ABCDEF);
    const std::string text = "Now is the time ";
    ASSERT_EQ(des_encrypt(k.data(), reinterpret_cast<const unsigned char*>(text.data()), 16, out.data()), 0);
    const Block first = block_of(0x3FA40E8A984D4815);
    const Block second = block_of(0x6A271787AB8883F9);
    EXPECT_TRUE(std::equal(first.begin(), first.end(), out.begin()));
    EXPECT_TRUE(std::equal(second.begin(), second.end(), out.begin() + 8));
    EXPECT_EQ(out[16], sentinel);
}

TEST_F(DesFamily, TripleEncryptMatchesKnownAnswer) {
    // Two-key E-D-E, K1 0123456789ABCDEF, K2 FEDCBA9876543210.
    const std::array<unsigned char, 16> k{0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF,
                                          0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10};
    const std::string text = "Now is the time ";
    const auto* plain = reinterpret_cast<const unsigned char*>(text.data());
    ASSERT_EQ(des3_encrypt(k.data(), plain, 16, out.data()), 0);
    const Block first = block_of(0xD80A0D8B2BAE5E4E);
    const Block second = block_of(0x6A0094171ABCFC27);
    EXPECT_TRUE(std::equal(first.begin(), first.end(), out.begin()));
    EXPECT_TRUE(std::equal(second.begin(), second.end(), out.begin() + 8));
    Bytes back(16);
    ASSERT_EQ(des3_decrypt(k.data(), out.data(), 16, back.data()), 0);
    EXPECT_TRUE(std::equal(back.begin(), back.end(), plain));
}

TEST_F(DesFamily, EqualHalvesGiveEqualCipherHalves) {
    std::copy(data.begin(), data.begin() + 8, data.begin() + 8);
    ASSERT_EQ(des_encrypt(key.data(), data.data(), 16, out.data()), 0);
    EXPECT_TRUE(std::equal(out.begin(), out.begin() + 8, out.begin() + 8));
    EXPECT_NE(Bytes(out.begin(), out.begin() + 8), Bytes(data.begin(), data.begin() + 8));
}

TEST_F(DesFamily, EncryptThenDecryptGivesTheInputBack) {
    const std::pair<DesExport, DesExport> pairs[]{{des_encrypt, des_decrypt}, {des3_encrypt, des3_decrypt}};
    for (const auto& [encrypt, decrypt] : pairs)
        for (unsigned char length : {8, 16}) {
            Bytes back(length);
            ASSERT_EQ(encrypt(key.data(), data.data(), length, out.data()), 0);
            ASSERT_EQ(decrypt(key.data(), out.data(), length, back.data()), 0);
            EXPECT_EQ(back, Bytes(data.begin(), data.begin() + length));
        }
}

TEST_F(DesFamily, TripleWithEqualHalvesOfTheKeyIsSingle) {
    std::copy(key.begin(), key.begin() + 8, key.begin() + 8);
    Bytes single(16);
    ASSERT_EQ(des3_encrypt(key.data(), data.data(), 16, out.data()), 0);
    ASSERT_EQ(des_encrypt(key.data(), data.data(), 16, single.data()), 0);
    EXPECT_TRUE(std::equal(single.begin(), single.end(), out.begin()));
}

TEST_F(DesFamily, TripleIsEncryptDecryptEncryptWithTheOuterKeyFirst) {
    const Block k1{key[0], key[1], key[2], key[3], key[4], key[5], key[6], key[7]};
    const Block k2{key[8], key[9], key[10], key[11], key[12], key[13], key[14], key[15]};
    Block expected{};
    std::copy(data.begin(), data.begin() + 8, expected.begin());
    expected = des_once(k1, expected, qz::reader::des_mode_encrypt);
    expected = des_once(k2, expected, qz::reader::des_mode_decrypt);
    expected = des_once(k1, expected, qz::reader::des_mode_encrypt);
    ASSERT_EQ(des3_encrypt(key.data(), data.data(), 8, out.data()), 0);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), out.begin()));
}

TEST_F(DesFamily, ShortLengthGivesTheFrontOfTheZeroFilledBlock) {
    const Block key1{key[0], key[1], key[2], key[3], key[4], key[5], key[6], key[7]};
    for (unsigned char length = 1; length <= 16; ++length) {
        SCOPED_TRACE(static_cast<int>(length));
        const Bytes full = ecb(key1, DesDirection::encrypt, Bytes(data.begin(), data.begin() + length));
        std::fill(out.begin(), out.end(), sentinel);
        ASSERT_EQ(des_encrypt(key.data(), data.data(), length, out.data()), 0);
        EXPECT_TRUE(std::equal(full.begin(), full.begin() + length, out.begin()));
        EXPECT_TRUE(std::all_of(out.begin() + length, out.end(), [](unsigned char b) { return b == sentinel; }));
    }
}

// ---- rf_encrypt and rf_decrypt ---------------------------------------------------------

TEST(RfDes, NineBytesGiveTwoBlocksAndDecryptToTheDataAndZeros) {
    std::mt19937 rng(3);
    const Block key = random_block(rng);
    const Bytes data = random_bytes(rng, 9);
    Bytes cipher(20, sentinel);
    ASSERT_EQ(rf_encrypt(key.data(), data.data(), 9, cipher.data()), 0);
    EXPECT_TRUE(std::all_of(cipher.begin() + 16, cipher.end(), [](unsigned char b) { return b == sentinel; }));
    Bytes plain(16, sentinel);
    ASSERT_EQ(rf_decrypt(key.data(), cipher.data(), 16, plain.data()), 0);
    Bytes expected = data;
    expected.resize(16, 0);
    EXPECT_EQ(plain, expected);
}

TEST(RfDes, EightBytesEqualDesEncrypt) {
    std::mt19937 rng(4);
    const Block key = random_block(rng);
    const Bytes data = random_bytes(rng, 8);
    Bytes rf(8), des(8);
    ASSERT_EQ(rf_encrypt(key.data(), data.data(), 8, rf.data()), 0);
    ASSERT_EQ(des_encrypt(key.data(), data.data(), 8, des.data()), 0);
    EXPECT_EQ(rf, des);
}

TEST(RfDes, LengthZeroWritesNothing) {
    const Block key{};
    Bytes out(8, sentinel);
    EXPECT_EQ(rf_encrypt(key.data(), out.data(), 0, out.data()), 0);
    EXPECT_EQ(rf_decrypt(nullptr, nullptr, 0, out.data()), 0);
    EXPECT_EQ(out, Bytes(8, sentinel));
}

TEST(RfDes, NullPointersAreRefused) {
    const Block key{};
    Bytes buffer(8);
    EXPECT_EQ(rf_encrypt(nullptr, buffer.data(), 8, buffer.data()), -19);
    EXPECT_EQ(rf_encrypt(key.data(), nullptr, 8, buffer.data()), -19);
    EXPECT_EQ(rf_decrypt(key.data(), buffer.data(), 8, nullptr), -19);
}

TEST(RfDes, InputAboveTheUsualLimitIsProcessedWhole) {
    std::mt19937 rng(8);
    const Block key = random_block(rng);
    const unsigned int length = 100'003;
    const Bytes data = random_bytes(rng, length);
    Bytes cipher(100'008 + 8, sentinel);
    ASSERT_EQ(rf_encrypt(key.data(), data.data(), length, cipher.data()), 0);
    EXPECT_EQ(cipher[100'008], sentinel);
    Bytes plain(100'008);
    ASSERT_EQ(rf_decrypt(key.data(), cipher.data(), 100'008, plain.data()), 0);
    EXPECT_TRUE(std::equal(data.begin(), data.end(), plain.begin()));
    EXPECT_TRUE(std::all_of(plain.begin() + length, plain.end(), [](unsigned char b) { return b == 0; }));
}

TEST(RfDes, InPlaceGivesTheSameResult) {
    std::mt19937 rng(9);
    const Block key = random_block(rng);
    Bytes buffer = random_bytes(rng, 64);
    const Bytes expected = ecb(key, DesDirection::encrypt, buffer);
    ASSERT_EQ(rf_encrypt(key.data(), buffer.data(), 64, buffer.data()), 0);
    EXPECT_EQ(buffer, expected);
}

TEST(RfDes, ParallelCallsGiveTheSingleThreadedResults) {
    constexpr std::size_t threads = 4;
    constexpr std::size_t length = 64 * 1024 + 5;
    std::mt19937 rng(12);
    std::vector<Block> keys;
    std::vector<Bytes> inputs;
    std::vector<Bytes> expected;
    for (std::size_t t = 0; t < threads; ++t) {
        keys.push_back(random_block(rng));
        inputs.push_back(random_bytes(rng, length));
        expected.push_back(ecb(keys[t], DesDirection::encrypt, inputs[t]));
    }
    std::vector<int> mismatches(threads, 0);
    {
        std::vector<std::jthread> workers;
        for (std::size_t t = 0; t < threads; ++t)
            workers.emplace_back([&, t] {
                Bytes cipher(qz::reader::des_padded_length(length));
                Bytes plain(cipher.size());
                for (int round = 0; round < 20; ++round) {
                    rf_encrypt(keys[t].data(), inputs[t].data(), length, cipher.data());
                    rf_decrypt(keys[t].data(), cipher.data(), static_cast<unsigned int>(cipher.size()), plain.data());
                    if (cipher != expected[t] || !std::equal(inputs[t].begin(), inputs[t].end(), plain.begin()))
                        ++mismatches[t];
                }
            });
    }
    EXPECT_EQ(mismatches, std::vector<int>(threads, 0));
}

}  // namespace
