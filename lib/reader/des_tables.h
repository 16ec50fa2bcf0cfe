// The tables of the Data Encryption Standard (FIPS 46) and the lookup tables that
// the fast DES core builds from them at compile time.
//
// Bit n (1-based) of a standard value is its n-th most significant bit. Inside the
// rounds each 32-bit half is kept rotated left by one bit (the "round domain"): then
// the six input bits of every S-box lie side by side, either in the half itself
// (S2, S4, S6, S8) or in the half rotated right by four (S1, S3, S5, S7), and the
// expansion E costs one rotation. The lookups fold that rotation into the initial
// and final permutations and into the S-box tables.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace qz::reader::des_tables {

using Table = std::array<std::uint8_t, 64>;

inline constexpr Table initial_permutation{
    58, 50, 42, 34, 26, 18, 10, 2, 60, 52, 44, 36, 28, 20, 12, 4,
    62, 54, 46, 38, 30, 22, 14, 6, 64, 56, 48, 40, 32, 24, 16, 8,
    57, 49, 41, 33, 25, 17, 9,  1, 59, 51, 43, 35, 27, 19, 11, 3,
    61, 53, 45, 37, 29, 21, 13, 5, 63, 55, 47, 39, 31, 23, 15, 7};

inline constexpr Table final_permutation{
    40, 8, 48, 16, 56, 24, 64, 32, 39, 7, 47, 15, 55, 23, 63, 31,
    38, 6, 46, 14, 54, 22, 62, 30, 37, 5, 45, 13, 53, 21, 61, 29,
    36, 4, 44, 12, 52, 20, 60, 28, 35, 3, 43, 11, 51, 19, 59, 27,
    34, 2, 42, 10, 50, 18, 58, 26, 33, 1, 41, 9,  49, 17, 57, 25};

inline constexpr std::array<std::uint8_t, 48> expansion{
    32, 1,  2,  3,  4,  5,  4,  5,  6,  7,  8,  9,  8,  9,  10, 11,
    12, 13, 12, 13, 14, 15, 16, 17, 16, 17, 18, 19, 20, 21, 20, 21,
    22, 23, 24, 25, 24, 25, 26, 27, 28, 29, 28, 29, 30, 31, 32, 1};

inline constexpr std::array<std::uint8_t, 32> permutation_p{
    16, 7, 20, 21, 29, 12, 28, 17, 1,  15, 23, 26, 5,  18, 31, 10,
    2,  8, 24, 14, 32, 27, 3,  9,  19, 13, 30, 6,  22, 11, 4,  25};

// Row by row, 16 entries a row, as the standard prints them.
inline constexpr std::array<Table, 8> s_boxes{{
    {14, 4,  13, 1,  2,  15, 11, 8,  3,  10, 6,  12, 5,  9,  0,  7,
     0,  15, 7,  4,  14, 2,  13, 1,  10, 6,  12, 11, 9,  5,  3,  8,
     4,  1,  14, 8,  13, 6,  2,  11, 15, 12, 9,  7,  3,  10, 5,  0,
     15, 12, 8,  2,  4,  9,  1,  7,  5,  11, 3,  14, 10, 0,  6,  13},
    {15, 1,  8,  14, 6,  11, 3,  4,  9,  7,  2,  13, 12, 0,  5,  10,
     3,  13, 4,  7,  15, 2,  8,  14, 12, 0,  1,  10, 6,  9,  11, 5,
     0,  14, 7,  11, 10, 4,  13, 1,  5,  8,  12, 6,  9,  3,  2,  15,
     13, 8,  10, 1,  3,  15, 4,  2,  11, 6,  7,  12, 0,  5,  14, 9},
    {10, 0,  9,  14, 6,  3,  15, 5,  1,  13, 12, 7,  11, 4,  2,  8,
     13, 7,  0,  9,  3,  4,  6,  10, 2,  8,  5,  14, 12, 11, 15, 1,
     13, 6,  4,  9,  8,  15, 3,  0,  11, 1,  2,  12, 5,  10, 14, 7,
     1,  10, 13, 0,  6,  9,  8,  7,  4,  15, 14, 3,  11, 5,  2,  12},
    {7,  13, 14, 3,  0,  6,  9,  10, 1,  2,  8,  5,  11, 12, 4,  15,
     13, 8,  11, 5,  6,  15, 0,  3,  4,  7,  2,  12, 1,  10, 14, 9,
     10, 6,  9,  0,  12, 11, 7,  13, 15, 1,  3,  14, 5,  2,  8,  4,
     3,  15, 0,  6,  10, 1,  13, 8,  9,  4,  5,  11, 12, 7,  2,  14},
    {2,  12, 4,  1,  7,  10, 11, 6,  8,  5,  3,  15, 13, 0,  14, 9,
     14, 11, 2,  12, 4,  7,  13, 1,  5,  0,  15, 10, 3,  9,  8,  6,
     4,  2,  1,  11, 10, 13, 7,  8,  15, 9,  12, 5,  6,  3,  0,  14,
     11, 8,  12, 7,  1,  14, 2,  13, 6,  15, 0,  9,  10, 4,  5,  3},
    {12, 1,  10, 15, 9,  2,  6,  8,  0,  13, 3,  4,  14, 7,  5,  11,
     10, 15, 4,  2,  7,  12, 9,  5,  6,  1,  13, 14, 0,  11, 3,  8,
     9,  14, 15, 5,  2,  8,  12, 3,  7,  0,  4,  10, 1,  13, 11, 6,
     4,  3,  2,  12, 9,  5,  15, 10, 11, 14, 1,  7,  6,  0,  8,  13},
    {4,  11, 2,  14, 15, 0,  8,  13, 3,  12, 9,  7,  5,  10, 6,  1,
     13, 0,  11, 7,  4,  9,  1,  10, 14, 3,  5,  12, 2,  15, 8,  6,
     1,  4,  11, 13, 12, 3,  7,  14, 10, 15, 6,  8,  0,  5,  9,  2,
     6,  11, 13, 8,  1,  4,  10, 7,  9,  5,  0,  15, 14, 2,  3,  12},
    {13, 2,  8,  4,  6,  15, 11, 1,  10, 9,  3,  14, 5,  0,  12, 7,
     1,  15, 13, 8,  10, 3,  7,  4,  12, 5,  6,  11, 0,  14, 9,  2,
     7,  11, 4,  1,  9,  12, 14, 2,  0,  6,  10, 13, 15, 3,  5,  8,
     2,  1,  14, 7,  4,  10, 8,  13, 15, 12, 9,  0,  3,  5,  6,  11},
}};

inline constexpr std::array<std::uint8_t, 56> permuted_choice_1{
    57, 49, 41, 33, 25, 17, 9,  1,  58, 50, 42, 34, 26, 18,
    10, 2,  59, 51, 43, 35, 27, 19, 11, 3,  60, 52, 44, 36,
    63, 55, 47, 39, 31, 23, 15, 7,  62, 54, 46, 38, 30, 22,
    14, 6,  61, 53, 45, 37, 29, 21, 13, 5,  28, 20, 12, 4};

inline constexpr std::array<std::uint8_t, 48> permuted_choice_2{
    14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10, 23, 19, 12, 4,
    26, 8,  16, 7,  27, 20, 13, 2,  41, 52, 31, 37, 47, 55, 30, 40,
    51, 45, 33, 48, 44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};

// Left rotations of C and D before each round.
inline constexpr std::array<int, 16> key_shifts{1, 1, 2, 2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2, 1};

// Output bit i is input bit table[i] of an `in_bits`-bit value.
template <std::size_t N>
constexpr std::uint64_t permute(std::uint64_t in, int in_bits, const std::array<std::uint8_t, N>& table) {
    std::uint64_t out = 0;
    for (std::uint8_t from : table) out = (out << 1) | ((in >> (in_bits - from)) & 1);
    return out;
}

constexpr std::uint64_t to_round_domain(std::uint64_t halves) {
    return (std::uint64_t{std::rotl(static_cast<std::uint32_t>(halves >> 32), 1)} << 32) |
           std::rotl(static_cast<std::uint32_t>(halves), 1);
}

constexpr std::uint64_t from_round_domain(std::uint64_t halves) {
    return (std::uint64_t{std::rotr(static_cast<std::uint32_t>(halves >> 32), 1)} << 32) |
           std::rotr(static_cast<std::uint32_t>(halves), 1);
}

// A cooked subkey: the 6-bit groups of S1, S3, S5, S7 in the bytes of the high word,
// those of S2, S4, S6, S8 in the low word, each in the low six bits of its byte, in
// the order in which the round picks them from the half (see the header comment).
constexpr std::uint64_t cook_subkey(std::uint64_t subkey48) {
    std::uint64_t cooked = 0;
    for (int box = 0; box < 8; ++box) {
        const std::uint64_t group = (subkey48 >> (42 - 6 * box)) & 0x3f;
        const int word_shift = box % 2 == 0 ? 32 : 0;
        cooked |= group << (word_shift + 24 - 8 * (box / 2));
    }
    return cooked;
}

// The expansion as the rounds do it: the 48 bits E(R), from R in the round domain.
constexpr std::uint64_t expand_by_rotation(std::uint32_t right_rotated) {
    const std::uint32_t odd_boxes = std::rotr(right_rotated, 4);
    std::uint64_t expanded = 0;
    for (int box = 0; box < 8; ++box) {
        const std::uint32_t source = box % 2 == 0 ? odd_boxes : right_rotated;
        expanded = (expanded << 6) | ((source >> (24 - 8 * (box / 2))) & 0x3f);
    }
    return expanded;
}

// E is linear, so agreement on every single bit proves the rotation trick.
constexpr bool rotation_implements_expansion() {
    for (int bit = 0; bit < 32; ++bit) {
        const std::uint32_t right = std::uint32_t{1} << bit;
        if (expand_by_rotation(std::rotl(right, 1)) != permute(right, 32, expansion)) return false;
    }
    return true;
}
static_assert(rotation_implements_expansion());

constexpr bool final_inverts_initial() {
    for (int bit = 0; bit < 64; ++bit) {
        const std::uint64_t block = std::uint64_t{1} << bit;
        if (permute(permute(block, 64, initial_permutation), 64, final_permutation) != block) return false;
    }
    return true;
}
static_assert(final_inverts_initial());

template <typename T, std::size_t Rows, std::size_t Columns>
using Lookup = std::array<std::array<T, Columns>, Rows>;

// Initial permutation by input byte, giving L0 (high word) and R0 in the round domain.
alignas(64) inline constexpr auto initial_lookup = [] {
    Lookup<std::uint64_t, 8, 256> lookup{};
    for (int byte = 0; byte < 8; ++byte)
        for (int value = 0; value < 256; ++value)
            lookup[byte][value] = to_round_domain(
                permute(std::uint64_t(value) << (56 - 8 * byte), 64, initial_permutation));
    return lookup;
}();

// Final permutation by byte of the pre-output R16 L16 in the round domain.
alignas(64) inline constexpr auto final_lookup = [] {
    Lookup<std::uint64_t, 8, 256> lookup{};
    for (int byte = 0; byte < 8; ++byte)
        for (int value = 0; value < 256; ++value)
            lookup[byte][value] = permute(from_round_domain(std::uint64_t(value) << (56 - 8 * byte)), 64,
                                          final_permutation);
    return lookup;
}();

// S-box followed by P, by box and 6-bit input, in the round domain.
alignas(64) inline constexpr auto sp_lookup = [] {
    Lookup<std::uint32_t, 8, 64> lookup{};
    for (int box = 0; box < 8; ++box)
        for (int input = 0; input < 64; ++input) {
            const int row = ((input >> 4) & 2) | (input & 1);
            const int column = (input >> 1) & 0xf;
            const std::uint64_t nibble = s_boxes[box][row * 16 + column];
            lookup[box][input] = std::rotl(
                static_cast<std::uint32_t>(permute(nibble << (28 - 4 * box), 32, permutation_p)), 1);
        }
    return lookup;
}();

// PC-1 by key byte, giving C (bits 55..28) and D (bits 27..0).
alignas(64) inline constexpr auto pc1_lookup = [] {
    Lookup<std::uint64_t, 8, 256> lookup{};
    for (int byte = 0; byte < 8; ++byte)
        for (int value = 0; value < 256; ++value)
            lookup[byte][value] = permute(std::uint64_t(value) << (56 - 8 * byte), 64, permuted_choice_1);
    return lookup;
}();

// PC-2 by 7-bit group of C and D (groups 0-3 from C, 4-7 from D), giving cooked subkeys.
alignas(64) inline constexpr auto pc2_lookup = [] {
    Lookup<std::uint64_t, 8, 128> lookup{};
    for (int group = 0; group < 8; ++group)
        for (int value = 0; value < 128; ++value)
            lookup[group][value] =
                cook_subkey(permute(std::uint64_t(value) << (49 - 7 * group), 56, permuted_choice_2));
    return lookup;
}();

}  // namespace qz::reader::des_tables
