#include "sim/models/pinpad/des_cipher.h"

#include <algorithm>
#include <stdexcept>

namespace qz::sim {
namespace {

// The standard's tables: bit positions counted from 1, the most significant bit first.
constexpr std::array<int, 64> initial_permutation{
    58, 50, 42, 34, 26, 18, 10, 2, 60, 52, 44, 36, 28, 20, 12, 4, 62, 54, 46, 38, 30, 22,
    14, 6,  64, 56, 48, 40, 32, 24, 16, 8, 57, 49, 41, 33, 25, 17, 9,  1,  59, 51, 43, 35,
    27, 19, 11, 3,  61, 53, 45, 37, 29, 21, 13, 5, 63, 55, 47, 39, 31, 23, 15, 7};
constexpr std::array<int, 64> final_permutation{
    40, 8, 48, 16, 56, 24, 64, 32, 39, 7, 47, 15, 55, 23, 63, 31, 38, 6, 46, 14, 54, 22,
    62, 30, 37, 5, 45, 13, 53, 21, 61, 29, 36, 4, 44, 12, 52, 20, 60, 28, 35, 3, 43, 11,
    51, 19, 59, 27, 34, 2, 42, 10, 50, 18, 58, 26, 33, 1, 41, 9, 49, 17, 57, 25};
constexpr std::array<int, 48> expansion{32, 1,  2,  3,  4,  5,  4,  5,  6,  7,  8,  9,  8,  9,  10, 11,
                                        12, 13, 12, 13, 14, 15, 16, 17, 16, 17, 18, 19, 20, 21, 20, 21,
                                        22, 23, 24, 25, 24, 25, 26, 27, 28, 29, 28, 29, 30, 31, 32, 1};
constexpr std::array<int, 32> permutation{16, 7, 20, 21, 29, 12, 28, 17, 1,  15, 23, 26, 5,  18, 31, 10,
                                          2,  8, 24, 14, 32, 27, 3,  9,  19, 13, 30, 6,  22, 11, 4,  25};
constexpr std::array<int, 56> permuted_choice_1{
    57, 49, 41, 33, 25, 17, 9,  1,  58, 50, 42, 34, 26, 18, 10, 2,  59, 51, 43, 35, 27, 19, 11, 3,  60, 52, 44, 36,
    63, 55, 47, 39, 31, 23, 15, 7,  62, 54, 46, 38, 30, 22, 14, 6,  61, 53, 45, 37, 29, 21, 13, 5,  28, 20, 12, 4};
constexpr std::array<int, 48> permuted_choice_2{14, 17, 11, 24, 1,  5,  3,  28, 15, 6,  21, 10, 23, 19, 12, 4,
                                                26, 8,  16, 7,  27, 20, 13, 2,  41, 52, 31, 37, 47, 55, 30, 40,
                                                51, 45, 33, 48, 44, 49, 39, 56, 34, 53, 46, 42, 50, 36, 29, 32};
constexpr std::array<int, 16> left_shifts{1, 1, 2, 2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2, 1};
constexpr std::array<std::array<std::uint8_t, 64>, 8> s_boxes{{
    {14, 4,  13, 1, 2,  15, 11, 8,  3,  10, 6,  12, 5,  9,  0, 7,  0, 15, 7,  4,  14, 2,  13, 1,  10, 6, 12, 11,
     9,  5,  3,  8, 4,  1,  14, 8,  13, 6,  2,  11, 15, 12, 9, 7,  3, 10, 5,  0,  15, 12, 8,  2,  4,  9, 1,  7,
     5,  11, 3,  14, 10, 0, 6,  13},
    {15, 1,  8,  14, 6,  11, 3,  4,  9,  7, 2,  13, 12, 0, 5,  10, 3,  13, 4, 7,  15, 2,  8,  14, 12, 0, 1,  10,
     6,  9,  11, 5,  0,  14, 7,  11, 10, 4, 13, 1,  5,  8, 12, 6,  9,  3,  2, 15, 13, 8,  10, 1,  3,  15, 4, 2,
     11, 6,  7,  12, 0,  5,  14, 9},
    {10, 0,  9,  14, 6, 3,  15, 5,  1,  13, 12, 7,  11, 4,  2,  8,  13, 7,  0, 9,  3,  4,  6,  10, 2,  8, 5,  14,
     12, 11, 15, 1,  13, 6, 4,  9,  8,  15, 3,  0,  11, 1,  2,  12, 5,  10, 14, 7, 1,  10, 13, 0,  6,  9,  8, 7,
     4,  15, 14, 3,  11, 5, 2,  12},
    {7,  13, 14, 3,  0,  6,  9,  10, 1,  2, 8, 5,  11, 12, 4,  15, 13, 8,  11, 5, 6,  15, 0,  3,  4,  7, 2,  12,
     1,  10, 14, 9,  10, 6,  9,  0,  12, 11, 7, 13, 15, 1,  3,  14, 5,  2,  8, 4,  3,  15, 0,  6,  10, 1, 13, 8,
     9,  4,  5,  11, 12, 7,  2,  14},
    {2,  12, 4, 1,  7,  10, 11, 6,  8,  5,  3,  15, 13, 0, 14, 9,  14, 11, 2,  12, 4, 7,  13, 1,  5, 0,  15, 10,
     3,  9,  8, 6,  4,  2,  1,  11, 10, 13, 7,  8,  15, 9, 12, 5,  6,  3,  0,  14, 11, 8, 12, 7,  1, 14, 2,  13,
     6,  15, 0, 9,  10, 4,  5,  3},
    {12, 1,  10, 15, 9,  2,  6, 8,  0,  13, 3,  4,  14, 7,  5,  11, 10, 15, 4,  2, 7,  12, 9,  5, 6,  1,  13, 14,
     0,  11, 3,  8,  9,  14, 15, 5, 2,  8,  12, 3,  7,  0,  4,  10, 1,  13, 11, 6, 4,  3,  2,  12, 9, 5,  15, 10,
     11, 14, 1,  7,  6,  0,  8, 13},
    {4,  11, 2,  14, 15, 0, 8, 13, 3,  12, 9, 7,  5,  10, 6, 1,  13, 0,  11, 7,  4,  9, 1,  10, 14, 3,  5, 12,
     2,  15, 8,  6,  1,  4, 11, 13, 12, 3,  7, 14, 10, 15, 6, 8,  0,  5,  9,  2,  6,  11, 13, 8,  1, 4,  10, 7,
     9,  5,  0,  15, 14, 2, 3,  12},
    {13, 2,  8, 4,  6,  15, 11, 1,  10, 9,  3, 14, 5,  0,  12, 7,  1,  15, 13, 8, 10, 3,  7,  4,  12, 5, 6,  11,
     0,  14, 9, 2,  7,  11, 4,  1,  9,  12, 14, 2, 0,  6,  10, 13, 15, 3,  5,  8, 2,  1,  14, 7,  4,  10, 8, 13,
     15, 12, 9, 0,  3,  5,  6,  11},
}};

// Bit `position` (from 1, most significant first) of a value `width` bits wide.
constexpr std::uint64_t bit(std::uint64_t value, int width, int position) { return (value >> (width - position)) & 1; }

template <std::size_t N>
std::uint64_t permute(std::uint64_t value, int width, const std::array<int, N>& table) {
    std::uint64_t result = 0;
    for (int position : table) result = (result << 1) | bit(value, width, position);
    return result;
}

std::uint64_t rotate_left_28(std::uint64_t half, int places) {
    return ((half << places) | (half >> (28 - places))) & 0x0FFFFFFF;
}

std::array<std::uint64_t, 16> subkeys(std::span<const std::uint8_t, 8> key) {
    std::uint64_t whole = 0;
    for (std::uint8_t byte : key) whole = (whole << 8) | byte;
    const std::uint64_t cd = permute(whole, 64, permuted_choice_1);
    std::uint64_t c = cd >> 28;
    std::uint64_t d = cd & 0x0FFFFFFF;
    std::array<std::uint64_t, 16> keys{};
    for (std::size_t round = 0; round < keys.size(); ++round) {
        c = rotate_left_28(c, left_shifts[round]);
        d = rotate_left_28(d, left_shifts[round]);
        keys[round] = permute((c << 28) | d, 56, permuted_choice_2);
    }
    return keys;
}

std::uint64_t feistel(std::uint64_t right, std::uint64_t subkey) {
    const std::uint64_t mixed = permute(right, 32, expansion) ^ subkey;
    std::uint64_t substituted = 0;
    for (int box = 0; box < 8; ++box) {
        const auto six = static_cast<unsigned>((mixed >> (42 - 6 * box)) & 0x3F);
        const unsigned row = ((six >> 4) & 2) | (six & 1);
        const unsigned column = (six >> 1) & 0xF;
        substituted = (substituted << 4) | s_boxes[static_cast<std::size_t>(box)][row * 16 + column];
    }
    return permute(substituted, 32, permutation);
}

DesBlock run(const DesBlock& block, std::span<const std::uint8_t, 8> key, bool decipher) {
    const auto keys = subkeys(key);
    std::uint64_t whole = 0;
    for (std::uint8_t byte : block) whole = (whole << 8) | byte;
    const std::uint64_t permuted = permute(whole, 64, initial_permutation);
    std::uint64_t left = permuted >> 32;
    std::uint64_t right = permuted & 0xFFFFFFFF;
    for (std::size_t round = 0; round < keys.size(); ++round) {
        const std::uint64_t next = left ^ feistel(right, keys[decipher ? 15 - round : round]);
        left = right;
        right = next;
    }
    const std::uint64_t output = permute((right << 32) | left, 64, final_permutation);
    DesBlock result{};
    for (std::size_t i = 0; i < result.size(); ++i) result[i] = static_cast<std::uint8_t>(output >> (56 - 8 * i));
    return result;
}

// Runs `single` or `triple` over each whole block of `data`, by the key's length.
template <class Single, class Triple>
void each_block(std::span<std::uint8_t> data, std::span<const std::uint8_t> key, Single single, Triple triple) {
    if (key.size() != 8 && key.size() != 16) throw std::logic_error("a DES key has 8 or 16 bytes");
    for (std::size_t offset = 0; offset + 8 <= data.size(); offset += 8) {
        const auto place = data.subspan(offset, 8);
        DesBlock block{};
        std::ranges::copy(place, block.begin());
        block = key.size() == 8 ? single(block, key.first<8>()) : triple(block, key.first<16>());
        std::ranges::copy(block, place.begin());
    }
}

}  // namespace

DesBlock des_encrypt(const DesBlock& block, std::span<const std::uint8_t, 8> key) { return run(block, key, false); }

DesBlock des_decrypt(const DesBlock& block, std::span<const std::uint8_t, 8> key) { return run(block, key, true); }

DesBlock tdes_encrypt(const DesBlock& block, std::span<const std::uint8_t, 16> key) {
    return des_encrypt(des_decrypt(des_encrypt(block, key.first<8>()), key.last<8>()), key.first<8>());
}

DesBlock tdes_decrypt(const DesBlock& block, std::span<const std::uint8_t, 16> key) {
    return des_decrypt(des_encrypt(des_decrypt(block, key.first<8>()), key.last<8>()), key.first<8>());
}

void encipher_blocks(std::span<std::uint8_t> data, std::span<const std::uint8_t> key) {
    each_block(data, key, des_encrypt, tdes_encrypt);
}

void decipher_blocks(std::span<std::uint8_t> data, std::span<const std::uint8_t> key) {
    each_block(data, key, des_decrypt, tdes_decrypt);
}

}  // namespace qz::sim
