#include "reader/hex.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace qz::reader {

namespace {

constexpr auto digit_pairs = [] {
    constexpr char digits[] = "0123456789ABCDEF";
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < pairs.size(); ++byte) pairs[byte] = {digits[byte >> 4], digits[byte & 0xf]};
    return pairs;
}();

// Nibble value of a character shifted into place; `not_a_digit` for anything else.
constexpr std::uint16_t not_a_digit = 0x100;

constexpr std::array<std::uint16_t, 256> nibble_table(int shift) {
    std::array<std::uint16_t, 256> table{};
    for (std::size_t c = 0; c < table.size(); ++c) {
        int value = -1;
        if (c >= '0' && c <= '9') value = static_cast<int>(c - '0');
        if (c >= 'A' && c <= 'F') value = static_cast<int>(c - 'A' + 10);
        if (c >= 'a' && c <= 'f') value = static_cast<int>(c - 'a' + 10);
        table[c] = value < 0 ? not_a_digit : static_cast<std::uint16_t>(value << shift);
    }
    return table;
}

constexpr auto high_nibbles = nibble_table(4);
constexpr auto low_nibbles = nibble_table(0);

}  // namespace

void to_hex(std::span<const std::uint8_t> bytes, std::span<char> text) {
    char* out = text.data();
    for (std::uint8_t byte : bytes) {
        std::memcpy(out, digit_pairs[byte].data(), 2);
        out += 2;
    }
}

std::size_t from_hex(std::span<const char> text, std::span<std::uint8_t> bytes) {
    const std::size_t count = std::min(text.size() / 2, bytes.size());
    const auto* in = reinterpret_cast<const unsigned char*>(text.data());
    // Pair by pair: the text may end at its first non-digit, so nothing behind that
    // character is read.
    for (std::size_t done = 0; done < count; ++done) {
        const std::uint16_t high = high_nibbles[in[2 * done]];
        if ((high & not_a_digit) != 0) return done;
        const std::uint16_t low = low_nibbles[in[2 * done + 1]];
        if ((low & not_a_digit) != 0) return done;
        bytes[done] = static_cast<std::uint8_t>(high | low);
    }
    return count;
}

}  // namespace qz::reader
