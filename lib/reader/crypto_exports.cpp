// Host cryptography and hexadecimal conversion exports; no terminal involved.
#include <array>
#include <cstring>
#include <span>

#include "api/qz_32.h"
#include "link/status.h"
#include "reader/des.h"
#include "reader/des_family.h"
#include "reader/hex.h"

namespace {

using namespace qz::reader;
using qz::link::status_bad_argument;

int run_rf(const unsigned char* key, const unsigned char* data, unsigned int length, unsigned char* out,
           DesDirection direction) {
    if (length == 0) return 0;
    if (key == nullptr || data == nullptr || out == nullptr) return status_bad_argument;
    des_ecb(key, direction, {data, length}, {out, des_padded_length(length)});
    return 0;
}

}  // namespace

QZ_32_API int QZ_32_CALL des_encrypt(const unsigned char* key, const unsigned char* data, unsigned char length,
                          unsigned char* out) {
    return des_family(DesStrength::single, DesDirection::encrypt, key, data, length, out);
}

QZ_32_API int QZ_32_CALL des_decrypt(const unsigned char* key, const unsigned char* data, unsigned char length,
                          unsigned char* out) {
    return des_family(DesStrength::single, DesDirection::decrypt, key, data, length, out);
}

QZ_32_API int QZ_32_CALL des3_encrypt(const unsigned char* key, const unsigned char* data, unsigned char length,
                           unsigned char* out) {
    return des_family(DesStrength::triple, DesDirection::encrypt, key, data, length, out);
}

QZ_32_API int QZ_32_CALL des3_decrypt(const unsigned char* key, const unsigned char* data, unsigned char length,
                           unsigned char* out) {
    return des_family(DesStrength::triple, DesDirection::decrypt, key, data, length, out);
}

QZ_32_API int QZ_32_CALL rf_encrypt(const unsigned char* key, const unsigned char* data, unsigned int length,
                         unsigned char* out) {
    return run_rf(key, data, length, out, DesDirection::encrypt);
}

QZ_32_API int QZ_32_CALL rf_decrypt(const unsigned char* key, const unsigned char* data, unsigned int length,
                         unsigned char* out) {
    return run_rf(key, data, length, out, DesDirection::decrypt);
}

QZ_32_API int QZ_32_CALL hex_asc(const unsigned char* source, char* text, unsigned int length) {
    if (text == nullptr || (source == nullptr && length != 0)) return status_bad_argument;
    const std::size_t digits = 2 * std::size_t{length};
    to_hex({source, length}, {text, digits});
    text[digits] = '\0';
    return 0;
}

QZ_32_API int QZ_32_CALL asc_hex(const char* text, unsigned char* target, unsigned int length) {
    if (target == nullptr || (text == nullptr && length != 0)) return status_bad_argument;
    if (from_hex({text, 2 * std::size_t{length}}, {target, length}) != length) return -1;
    target[length] = 0;
    return 0;
}
