#include "reader/des.h"

#include <array>
#include <bit>
#include <cstring>
#include <functional>

#include "reader/des_tables.h"

namespace qz::reader {

namespace {

using namespace des_tables;

// L and R, each in the round domain (rotated left by one bit).
struct Halves {
    std::uint32_t left;
    std::uint32_t right;
};

constexpr std::uint32_t mask28 = 0x0fffffff;

constexpr std::uint32_t rotl28(std::uint32_t half, int places) {
    return ((half << places) | (half >> (28 - places))) & mask28;
}

// C and D of the key schedule, rotated in place round by round. Enciphering rotates
// left by the schedule's shifts before each round (K1 to K16); deciphering rotates
// right by 0, then by the shifts taken backwards (K16 down to K1).
template <DesDirection Direction>
class SubkeyWalk {
public:
    explicit SubkeyWalk(const unsigned char* key) {
        std::uint64_t cd = 0;
        for (int byte = 0; byte < 8; ++byte) cd |= pc1_lookup[byte][key[byte]];
        c_ = static_cast<std::uint32_t>(cd >> 28);
        d_ = static_cast<std::uint32_t>(cd) & mask28;
    }

    // The cooked subkey of the next round.
    std::uint64_t next() {
        if constexpr (Direction == DesDirection::encrypt) {
            rotate(key_shifts[round_]);
        } else if (round_ > 0) {
            rotate(28 - key_shifts[16 - round_]);
        }
        ++round_;
        return pc2_lookup[0][c_ >> 21] | pc2_lookup[1][(c_ >> 14) & 0x7f] | pc2_lookup[2][(c_ >> 7) & 0x7f] |
               pc2_lookup[3][c_ & 0x7f] | pc2_lookup[4][d_ >> 21] | pc2_lookup[5][(d_ >> 14) & 0x7f] |
               pc2_lookup[6][(d_ >> 7) & 0x7f] | pc2_lookup[7][d_ & 0x7f];
    }

private:
    void rotate(int places) {
        c_ = rotl28(c_, places);
        d_ = rotl28(d_, places);
    }

    std::uint32_t c_;
    std::uint32_t d_;
    std::size_t round_ = 0;
};

// f(R, K): expansion, XOR with the subkey, S-boxes and P in eight lookups.
inline std::uint32_t feistel(std::uint32_t right, std::uint64_t subkey) {
    const std::uint32_t odd = std::rotr(right, 4) ^ static_cast<std::uint32_t>(subkey >> 32);
    const std::uint32_t even = right ^ static_cast<std::uint32_t>(subkey);
    return sp_lookup[0][(odd >> 24) & 0x3f] | sp_lookup[2][(odd >> 16) & 0x3f] | sp_lookup[4][(odd >> 8) & 0x3f] |
           sp_lookup[6][odd & 0x3f] | sp_lookup[1][(even >> 24) & 0x3f] | sp_lookup[3][(even >> 16) & 0x3f] |
           sp_lookup[5][(even >> 8) & 0x3f] | sp_lookup[7][even & 0x3f];
}

// The 16 rounds, each with the subkey that `next_subkey` gives; the result is the
// pre-output, its halves swapped.
template <typename NextSubkey>
inline Halves run_rounds(Halves halves, NextSubkey&& next_subkey) {
    std::uint32_t left = halves.left;
    std::uint32_t right = halves.right;
    for (int round = 0; round < 16; round += 2) {
        left ^= feistel(right, next_subkey());
        right ^= feistel(left, next_subkey());
    }
    return {right, left};
}

// Subkeys made while the rounds run: one key, one block.
template <DesDirection Direction>
Halves run_rounds_walking(Halves halves, const unsigned char* key) {
    SubkeyWalk<Direction> walk(key);
    return run_rounds(halves, [&walk] { return walk.next(); });
}

// Cooked subkeys in the order the rounds use them, made once for many blocks.
using Subkeys = std::array<std::uint64_t, 16>;

Subkeys make_subkeys(const unsigned char* key, DesDirection direction) {
    SubkeyWalk<DesDirection::encrypt> walk(key);
    Subkeys subkeys;
    for (std::size_t round = 0; round < subkeys.size(); ++round)
        subkeys[direction == DesDirection::encrypt ? round : 15 - round] = walk.next();
    return subkeys;
}

inline Halves load_block(const unsigned char* block) {
    std::uint64_t halves = 0;
    for (int byte = 0; byte < 8; ++byte) halves |= initial_lookup[byte][block[byte]];
    return {static_cast<std::uint32_t>(halves >> 32), static_cast<std::uint32_t>(halves)};
}

inline void store_block(Halves halves, unsigned char* block) {
    const std::uint64_t both = (std::uint64_t{halves.left} << 32) | halves.right;
    std::uint64_t out = 0;
    for (int byte = 0; byte < 8; ++byte) out |= final_lookup[byte][(both >> (56 - 8 * byte)) & 0xff];
    for (int byte = 0; byte < 8; ++byte) block[byte] = static_cast<unsigned char>(out >> (56 - 8 * byte));
}

// The halves between des_block calls.
Halves work_area{};

}  // namespace

void des_block(unsigned char* data, const unsigned char* key, unsigned char mode) {
    const Halves start = (mode & des_load) != 0 ? load_block(data) : work_area;
    work_area = (mode & des_encipher) != 0 ? run_rounds_walking<DesDirection::encrypt>(start, key)
                                           : run_rounds_walking<DesDirection::decrypt>(start, key);
    if ((mode & des_store) != 0) store_block(work_area, data);
}

void des_ecb(const unsigned char* key, DesDirection direction, std::span<const std::uint8_t> input,
             std::span<std::uint8_t> output) {
    const Subkeys subkeys = make_subkeys(key, direction);
    const std::size_t full_blocks = input.size() / des_block_size;
    const std::size_t tail = input.size() % des_block_size;
    const auto process = [&](const std::uint8_t* in, std::size_t block) {
        std::size_t round = 0;
        const Halves result = run_rounds(load_block(in), [&] { return subkeys[round++]; });
        store_block(result, output.data() + block * des_block_size);
    };
    const auto process_tail = [&] {
        std::array<std::uint8_t, des_block_size> last{};
        std::memcpy(last.data(), input.data() + full_blocks * des_block_size, tail);
        process(last.data(), full_blocks);
    };
    const auto process_full = [&](std::size_t block) { process(input.data() + block * des_block_size, block); };

    // Each block is read whole before it is written, so walking away from the side the
    // output lies on never overwrites input that is still to be read.
    if (std::less<const void*>{}(input.data(), output.data())) {
        if (tail != 0) process_tail();
        for (std::size_t block = full_blocks; block-- > 0;) process_full(block);
    } else {
        for (std::size_t block = 0; block < full_blocks; ++block) process_full(block);
        if (tail != 0) process_tail();
    }
}

}  // namespace qz::reader
