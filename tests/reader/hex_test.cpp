#include "reader/hex.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "qz_32.h"

namespace {

using Bytes = std::vector<unsigned char>;
constexpr unsigned char sentinel = 0xA5;

TEST(HexAsc, UpperCaseDigitsTerminatorAndRefusals) {
    const unsigned char source[]{0xAB, 0x01};
    std::string text(6, '#');
    ASSERT_EQ(hex_asc(source, text.data(), 2), 0);
    EXPECT_EQ(text, std::string("AB01\0#", 6));
    EXPECT_EQ(hex_asc(nullptr, text.data(), 0), 0);
    EXPECT_EQ(text, std::string("\0B01\0#", 6));
    EXPECT_EQ(hex_asc(source, nullptr, 1), -19);
}

TEST(AscHex, EitherCaseIsTakenAndOnlyTheLengthIsLookedAt) {
    for (const char* text : {"ab01", "AB01", "aB01ZZ"}) {
        Bytes target(4, sentinel);
        ASSERT_EQ(asc_hex(text, target.data(), 2), 0) << text;
        EXPECT_EQ(target, (Bytes{0xAB, 0x01, 0x00, sentinel})) << text;
    }
    Bytes target(2, sentinel);
    EXPECT_EQ(asc_hex(nullptr, target.data(), 0), 0);
    EXPECT_EQ(target, (Bytes{0x00, sentinel}));
    EXPECT_EQ(asc_hex("00", nullptr, 1), -19);
}

// A bad character at every position of a text long enough for the chunked path,
// for characters on both sides of each digit range and outside ASCII.
TEST(AscHex, BadDigitAnywhereKeepsExactlyTheBytesBeforeIt) {
    const std::string good = "0123456789abcdefABCDEF0123456789ABCDEFabcdef";
    const Bytes good_bytes{0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xAB, 0xCD, 0xEF,
                           0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xAB, 0xCD, 0xEF};
    const std::size_t length = good_bytes.size();
    for (char bad : {'/', ':', '@', 'G', '`', 'g', ' ', '\0', '\x80', '\xff', '-', 'x'})
        for (std::size_t at = 0; at < good.size(); ++at) {
            SCOPED_TRACE(testing::Message() << "char " << int(static_cast<unsigned char>(bad)) << " at " << at);
            std::string text = good;
            text[at] = bad;
            Bytes target(length + 1, sentinel);
            ASSERT_EQ(asc_hex(text.data(), target.data(), static_cast<unsigned int>(length)), -1);
            Bytes expected(length + 1, sentinel);
            std::copy(good_bytes.begin(), good_bytes.begin() + at / 2, expected.begin());
            EXPECT_EQ(target, expected);
        }
}

// The text ends right before a page that may not be read: a read past its
// terminator is a crash in any build.
TEST(AscHex, ReadsNothingPastTheFirstCharacterThatIsNotADigit) {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* area = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(area, MAP_FAILED);
    char* guard = static_cast<char*>(area) + page;
    ASSERT_EQ(mprotect(guard, page, PROT_NONE), 0);
    for (const std::string digits : {"", "A", "0123456789abcdef0123456789ABCDEF", "0123456789abcdef0123456789ABCDE"}) {
        SCOPED_TRACE(digits);
        char* text = guard - digits.size() - 1;
        std::memcpy(text, digits.c_str(), digits.size() + 1);
        Bytes target(256, sentinel);
        EXPECT_EQ(asc_hex(text, target.data(), 255), -1);
        EXPECT_EQ(target[digits.size() / 2], sentinel);
    }
    munmap(area, 2 * page);
}

TEST(HexConversions, RoundTripOnRandomBytesOfManyLengths) {
    std::mt19937 rng(17);
    for (std::size_t length : {1u, 7u, 8u, 9u, 16u, 17u, 256u, 4096u}) {
        SCOPED_TRACE(length);
        Bytes bytes(length);
        for (auto& byte : bytes) byte = static_cast<unsigned char>(length == 256 ? &byte - bytes.data() : rng());
        std::string text(2 * length + 1, '#');
        ASSERT_EQ(hex_asc(bytes.data(), text.data(), static_cast<unsigned int>(length)), 0);
        EXPECT_EQ(text.find_first_not_of("0123456789ABCDEF"), 2 * length);
        Bytes back(length + 1, sentinel);
        ASSERT_EQ(asc_hex(text.data(), back.data(), static_cast<unsigned int>(length)), 0);
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), back.begin()));
        EXPECT_EQ(back[length], 0);
    }
}

TEST(FromHexToHex, AsManyBytesAsBothSpansAllowAndNoTerminator) {
    const std::string odd = "A1B2C";  // the odd last digit is dropped
    Bytes bytes(4, sentinel);
    EXPECT_EQ(qz::reader::from_hex(odd, bytes), 2u);
    EXPECT_EQ(bytes, (Bytes{0xA1, 0xB2, sentinel, sentinel}));
    Bytes one(1, sentinel);
    EXPECT_EQ(qz::reader::from_hex(odd, one), 1u);
    EXPECT_EQ(one, Bytes{0xA1});

    std::string text(5, '#');
    qz::reader::to_hex(Bytes{0x0F, 0xF0}, text);
    EXPECT_EQ(text, "0FF0#");
}

}  // namespace
