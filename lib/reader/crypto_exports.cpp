// Host cryptography and hexadecimal conversion exports; no terminal involved.
#include <array>
#include <cstring>
#include <span>

#include "api/qz_32.h"
#include "link/status.h"
#include "reader/des.h"
#include "reader/hex.h"

namespace {

using namespace qz::reader;
using qz::link::status_bad_argument;

// One single-DES pass of a des_ family operation: which half of the key, which way.
struct DesPass {
    std::size_t key_offset;
    unsigned char mode;
};

constexpr std::array<DesPass, 1> single_encrypt{{{0, des_mode_encrypt}}};
constexpr std::array<DesPass, 1> single_decrypt{{{0, des_mode_decrypt}}};
constexpr std::array<DesPass, 3> triple_encrypt{{{0, des_mode_encrypt}, {8, des_mode_decrypt}, {0, des_mode_encrypt}}};
constexpr std::array<DesPass, 3> triple_decrypt{{{0, des_mode_decrypt}, {8, des_mode_encrypt}, {0, des_mode_decrypt}}};

constexpr std::size_t des_family_max_length = 16;

// 1 to 16 bytes in one or two zero-filled blocks, each through `passes` by des_block;
// the front `length` bytes go to `out`.
int run_des_family(const unsigned char* key, std::size_t key_length, const unsigned char* data,
                   unsigned char length, unsigned char* out, std::span<const DesPass> passes) {
    if (length == 0 || length > des_family_max_length) return status_bad_argument;
    if (key == nullptr || data == nullptr || out == nullptr) return status_bad_argument;
    std::array<unsigned char, 2 * des_block_size> sKeyData{};
    std::array<unsigned char, des_family_max_length> sDesData{};
    std::memcpy(sKeyData.data(), key, key_length);
    std::memcpy(sDesData.data(), data, length);
    const std::size_t blocks = length <= des_block_size ? 1 : 2;
    for (std::size_t block = 0; block < blocks; ++block)
        for (const DesPass& pass : passes)
            des_block(sDesData.data() + block * des_block_size, sKeyData.data() + pass.key_offset, pass.mode);
    std::memcpy(out, sDesData.data(), length);
    return 0;
}

int run_rf(const unsigned char* key, const unsigned char* data, unsigned int length, unsigned char* out,
           DesDirection direction) {
    if (length == 0) return 0;
    if (key == nullptr || data == nullptr || out == nullptr) return status_bad_argument;
    des_ecb(key, direction, {data, length}, {out, des_padded_length(length)});
    return 0;
}

}  // namespace

QZ_32_API int des_encrypt(const unsigned char* key, const unsigned char* data, unsigned char length,
                          unsigned char* out) {
    return run_des_family(key, des_block_size, data, length, out, single_encrypt);
}

QZ_32_API int des_decrypt(const unsigned char* key, const unsigned char* data, unsigned char length,
                          unsigned char* out) {
    return run_des_family(key, des_block_size, data, length, out, single_decrypt);
}

QZ_32_API int des3_encrypt(const unsigned char* key, const unsigned char* data, unsigned char length,
                           unsigned char* out) {
    return run_des_family(key, 2 * des_block_size, data, length, out, triple_encrypt);
}

QZ_32_API int des3_decrypt(const unsigned char* key, const unsigned char* data, unsigned char length,
                           unsigned char* out) {
    return run_des_family(key, 2 * des_block_size, data, length, out, triple_decrypt);
}

QZ_32_API int rf_encrypt(const unsigned char* key, const unsigned char* data, unsigned int length,
                         unsigned char* out) {
    return run_rf(key, data, length, out, DesDirection::encrypt);
}

QZ_32_API int rf_decrypt(const unsigned char* key, const unsigned char* data, unsigned int length,
                         unsigned char* out) {
    return run_rf(key, data, length, out, DesDirection::decrypt);
}

QZ_32_API int hex_asc(const unsigned char* source, char* text, unsigned int length) {
    if (text == nullptr || (source == nullptr && length != 0)) return status_bad_argument;
    const std::size_t digits = 2 * std::size_t{length};
    to_hex({source, length}, {text, digits});
    text[digits] = '\0';
    return 0;
}

QZ_32_API int asc_hex(const char* text, unsigned char* target, unsigned int length) {
    if (target == nullptr || (text == nullptr && length != 0)) return status_bad_argument;
    if (from_hex({text, 2 * std::size_t{length}}, {target, length}) != length) return -1;
    target[length] = 0;
    return 0;
}
