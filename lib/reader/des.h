// Software DES (FIPS 46) on the host: the single-block operation with its
// process-wide work area, and a re-entrant electronic code book over whole buffers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qz::reader {

inline constexpr std::size_t des_block_size = 8;

// Flags of the `mode` of des_block.
inline constexpr unsigned char des_load = 0x10;      // initial permutation of `data` into the work area
inline constexpr unsigned char des_encipher = 0x20;  // set: encipher; clear: decipher
inline constexpr unsigned char des_store = 0x40;     // final permutation of the work area into `data`
inline constexpr unsigned char des_mode_encrypt = des_load | des_encipher | des_store;  // 112
inline constexpr unsigned char des_mode_decrypt = des_load | des_store;                 // 80

// Runs the 16 rounds under the 8-byte `key` (parity bits ignored) on the process-wide
// work area. Without des_load the rounds start from what the previous call left there
// (its pre-output, so chained calls compose like whole operations); without des_store
// `data` is left as it was and only the work area holds the outcome. Not re-entrant.
void des_block(unsigned char* data, const unsigned char* key, unsigned char mode);

enum class DesDirection { encrypt, decrypt };

// Number of bytes that des_ecb writes for `length` input bytes: `length` rounded up
// to whole blocks.
constexpr std::size_t des_padded_length(std::size_t length) {
    return length / des_block_size * des_block_size + (length % des_block_size != 0 ? des_block_size : 0);
}

// Each block of `input` under the 8-byte `key`, the last one filled up with zeros, into
// `output`, which holds des_padded_length(input.size()) bytes. The two may overlap.
// Uses only the stack: calls in parallel are safe.
void des_ecb(const unsigned char* key, DesDirection direction, std::span<const std::uint8_t> input,
             std::span<std::uint8_t> output);

}  // namespace qz::reader
