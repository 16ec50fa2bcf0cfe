#include "identity/base64.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

namespace qz::identity {
namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The two characters of every 12-bit value, so that a group of three bytes takes
// two look-ups.
constexpr auto pair_table = [] {
    std::array<std::array<char, 2>, 4096> table{};
    for (std::size_t value = 0; value < table.size(); ++value) table[value] = {alphabet[value >> 6], alphabet[value & 63]};
    return table;
}();

// Multiple of 3, so that only the last piece of a file can need padding.
constexpr std::size_t read_piece = 3 * 16384;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

void encode_base64(std::span<const std::uint8_t> bytes, char* text) {
    const std::uint8_t* in = bytes.data();
    const std::uint8_t* const whole_end = in + bytes.size() / 3 * 3;
    for (; in != whole_end; in += 3, text += 4) {
        const std::uint32_t group = std::uint32_t{in[0]} << 16 | std::uint32_t{in[1]} << 8 | in[2];
        const auto& high = pair_table[group >> 12];
        const auto& low = pair_table[group & 0xFFF];
        text[0] = high[0];
        text[1] = high[1];
        text[2] = low[0];
        text[3] = low[1];
    }
    const std::size_t rest = bytes.size() % 3;
    if (rest == 0) return;
    const std::uint32_t group = std::uint32_t{in[0]} << 16 | (rest == 2 ? std::uint32_t{in[1]} << 8 : 0);
    text[0] = alphabet[group >> 18];
    text[1] = alphabet[(group >> 12) & 63];
    text[2] = rest == 2 ? alphabet[(group >> 6) & 63] : '=';
    text[3] = '=';
}

int file_to_base64(const char* path, char* text) {
    constexpr int refused = -19;
    // Opening for update as well refuses a file the caller may not write.
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path, "rb+"));
    if (!file) return refused;

    std::array<std::uint8_t, read_piece> piece;
    std::size_t total = 0;
    std::size_t written = 0;
    while (total < max_base64_file_bytes) {
        const std::size_t got = std::fread(piece.data(), 1, std::min(read_piece, max_base64_file_bytes - total), file.get());
        encode_base64(std::span(piece).first(got), text + written);
        written += base64_length(got);
        total += got;
        if (got < read_piece) break;
    }
    return total == 0 ? refused : static_cast<int>(written) + 1;
}

}  // namespace qz::identity
