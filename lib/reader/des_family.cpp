#include "reader/des_family.h"

#include <array>
#include <cstring>
#include <span>

#include "link/status.h"

namespace qz::reader {
namespace {

// One single-DES pass: which half of the key, which way.
struct DesPass {
    std::size_t key_offset;
    unsigned char mode;
};

constexpr std::array<DesPass, 1> single_encrypt{{{0, des_mode_encrypt}}};
constexpr std::array<DesPass, 1> single_decrypt{{{0, des_mode_decrypt}}};
constexpr std::array<DesPass, 3> triple_encrypt{{{0, des_mode_encrypt}, {8, des_mode_decrypt}, {0, des_mode_encrypt}}};
constexpr std::array<DesPass, 3> triple_decrypt{{{0, des_mode_decrypt}, {8, des_mode_encrypt}, {0, des_mode_decrypt}}};

constexpr std::size_t des_family_max_length = 16;

std::span<const DesPass> passes_of(DesStrength strength, DesDirection direction) {
    if (strength == DesStrength::single) return direction == DesDirection::encrypt ? single_encrypt : single_decrypt;
    return direction == DesDirection::encrypt ? std::span<const DesPass>(triple_encrypt) : triple_decrypt;
}

}  // namespace

int des_family(DesStrength strength, DesDirection direction, const unsigned char* key, const unsigned char* data,
               unsigned char length, unsigned char* out) {
    if (length == 0 || length > des_family_max_length) return link::status_bad_argument;
    if (key == nullptr || data == nullptr || out == nullptr) return link::status_bad_argument;
    const std::size_t key_length = strength == DesStrength::single ? des_block_size : 2 * des_block_size;
    std::array<unsigned char, 2 * des_block_size> sKeyData{};
    std::array<unsigned char, des_family_max_length> sDesData{};
    std::memcpy(sKeyData.data(), key, key_length);
    std::memcpy(sDesData.data(), data, length);
    const std::size_t blocks = length <= des_block_size ? 1 : 2;
    for (std::size_t block = 0; block < blocks; ++block)
        for (const DesPass& pass : passes_of(strength, direction))
            des_block(sDesData.data() + block * des_block_size, sKeyData.data() + pass.key_offset, pass.mode);
    std::memcpy(out, sDesData.data(), length);
    return 0;
}

}  // namespace qz::reader
