#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "card_data.h"
#include "qz_32.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

namespace fs = std::filesystem;

constexpr char guard = '#';
constexpr std::size_t limit = 2'097'152;
constexpr std::size_t longest_text = 2'796'204;

// Bit by bit, as RFC 4648 describes it.
std::string reference_base64(const Bytes& bytes) {
    const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    std::uint32_t bits = 0;
    int count = 0;
    for (std::uint8_t byte : bytes) {
        bits = bits << 8 | byte;
        for (count += 8; count >= 6; count -= 6) text += alphabet[(bits >> (count - 6)) & 63];
    }
    if (count > 0) text += alphabet[(bits << (6 - count)) & 63];
    while (text.size() % 4 != 0) text += '=';
    return text;
}

Bytes random_bytes(std::size_t size) {
    std::mt19937 random(static_cast<std::uint32_t>(size));
    Bytes bytes(size);
    for (auto& b : bytes) b = static_cast<std::uint8_t>(random());
    return bytes;
}

class FileBase64 : public ::testing::Test {
protected:
    std::string file_of(const Bytes& bytes) {
        const fs::path path = dir.path() / "data.bin";
        std::ofstream(path, std::ios::binary | std::ios::trunc)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return path.string();
    }

    // Result, and the text written up to the first guard character.
    std::pair<int, std::string> encode(const std::string& path) {
        std::fill(out.begin(), out.end(), guard);
        const int result = GetFileBase64Buffer(path.c_str(), out.data());
        return {result, std::string(out.begin(), std::find(out.begin(), out.end(), guard))};
    }

    TempDir dir;
    std::vector<char> out = std::vector<char>(longest_text + 16);
};

TEST_F(FileBase64, Rfc4648Vectors) {
    struct Case {
        std::string data;
        std::string text;
    };
    const std::vector<Case> cases{{"f", "Zg=="},         {"fo", "Zm8="},         {"foo", "Zm9v"},
                                  {"foob", "Zm9vYg=="},  {"fooba", "Zm9vYmE="},  {"foobar", "Zm9vYmFy"},
                                  {"\xFF\xFE\xFD", "//79"}, {std::string("\0", 1), "AA=="}};
    for (const Case& c : cases) {
        const auto [result, text] = encode(file_of(Bytes(c.data.begin(), c.data.end())));
        EXPECT_EQ(text, c.text) << c.data;
        EXPECT_EQ(result, static_cast<int>(c.text.size()) + 1) << "one more than the characters, no terminator";
    }
}

TEST_F(FileBase64, PieceBoundariesMatchTheReference) {
    for (std::size_t size : {1, 2, 3, 4, 49151, 49152, 49153, 98304, 98306, 1'000'001}) {
        const Bytes bytes = random_bytes(size);
        const auto [result, text] = encode(file_of(bytes));
        const std::string expected = reference_base64(bytes);
        EXPECT_TRUE(text == expected) << size;
        EXPECT_EQ(result, static_cast<int>(expected.size()) + 1) << size;
    }
}

TEST_F(FileBase64, OnlyTheFirstTwoMebibytesAreEncoded) {
    for (std::size_t size : {limit, limit + 1, std::size_t{3'000'000}}) {
        const Bytes bytes = random_bytes(size);
        const auto [result, text] = encode(file_of(bytes));
        EXPECT_EQ(result, 2'796'205) << size;
        ASSERT_EQ(text.size(), longest_text) << size;
        EXPECT_TRUE(text == reference_base64(Bytes(bytes.begin(), bytes.begin() + limit))) << size;
        EXPECT_EQ(out[longest_text], guard);
    }
}

TEST_F(FileBase64, RefusedFiles) {
    EXPECT_EQ(encode(file_of({})).first, -19) << "empty";
    EXPECT_EQ(encode((dir.path() / "missing").string()).first, -19);
    EXPECT_EQ(encode(dir.path().string()).first, -19) << "a folder";
    EXPECT_EQ(GetFileBase64Buffer(nullptr, out.data()), -19);
    EXPECT_EQ(GetFileBase64Buffer(file_of({1}).c_str(), nullptr), -19);
    // A file that may not be written: a running program cannot be opened for
    // writing, not even by root.
    EXPECT_EQ(encode(fs::canonical("/proc/self/exe").string()).first, -19);
    EXPECT_EQ(out[0], guard);
    if (geteuid() != 0) {
        const std::string path = file_of({1, 2, 3});
        fs::permissions(path, fs::perms::owner_read);
        EXPECT_EQ(encode(path).first, -19);
    }
}

}  // namespace
}  // namespace qz::test
