// The external PIN pad's exports: settings, key loads, the entry forms and the
// host-side decryption under the current work key.
#include "link/export_lock.h"
#include "link/status.h"
#include "pinpad/pad_commands.h"
#include "pinpad/pad_entry.h"
#include "pinpad/pad_state.h"
#include "reader/des_family.h"
#include "qz_32.h"

namespace qz::pinpad {
namespace {

// Single or triple DES decryption (by the key's type) under the host's copy of
// the current work key; -19 when its number is 16 or more (no copy is kept).
int decrypt_under_work_key(const unsigned char* data, unsigned char length, unsigned char* out) {
    PadState& state = pad_state();
    const KeyRow* row = key_row(state.pwdkb_work_keys, state.pwdkb_work_index);
    if (row == nullptr) return link::status_bad_argument;
    const unsigned char* key = row->data() + 1;
    const auto strength = (*row)[0] == 0 ? reader::DesStrength::single : reader::DesStrength::triple;
    return reader::des_family(strength, reader::DesDirection::decrypt, key, data, length, out);
}

}  // namespace
}  // namespace qz::pinpad

namespace form = qz::pinpad::form;
using qz::pinpad::enter_pin;

QZ_32_API int QZ_32_CALL pwd_decrypt(const unsigned char* data, unsigned char length, unsigned char* out) {
    return qz::pinpad::decrypt_under_work_key(data, length, out);
}

QZ_32_API int QZ_32_CALL pwdkb_settimeout(int icdev, unsigned char seconds) {
    const qz::link::ExportLock lock;
    return qz::pinpad::settimeout(icdev, seconds);
}

QZ_32_API int QZ_32_CALL pwdkb_setpwdlen(int icdev, unsigned char length) {
    const qz::link::ExportLock lock;
    return qz::pinpad::setpwdlen(icdev, length);
}

QZ_32_API int QZ_32_CALL pwdkb_load_mainkey(int icdev, unsigned char keymode, unsigned char mainno, const unsigned char* key) {
    const qz::link::ExportLock lock;
    return qz::pinpad::load_mainkey(icdev, keymode, mainno, key);
}

QZ_32_API int QZ_32_CALL pwdkb_load_workkey(int icdev, unsigned char keymode, unsigned char mainno, unsigned char workno,
                                 const unsigned char* key) {
    const qz::link::ExportLock lock;
    return qz::pinpad::load_workkey(icdev, keymode, mainno, workno, key);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd(int icdev, unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd, {}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd_again(int icdev, unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd_again, {}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd2(int icdev, unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd2, {}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd_again2(int icdev, unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd_again2, {}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd_new2(int icdev, int mode, unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd_new2, {.mode = mode}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd_new2_WaitNextKeyPress(int icdev, unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd_new2_next_key, {}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd_encrypt(int icdev, unsigned char keyno, const unsigned char* cardno, unsigned char* rlen,
                                   unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd_encrypt, {.keyno = keyno, .cardno = cardno}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd_again_encrypt(int icdev, unsigned char keyno, const unsigned char* cardno,
                                         unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd_again_encrypt, {.keyno = keyno, .cardno = cardno}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd_encrypt2(int icdev, unsigned char keyno, const unsigned char* cardno, unsigned char* rlen,
                                    unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd_encrypt2, {.keyno = keyno, .cardno = cardno}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd_again_encrypt2(int icdev, unsigned char keyno, const unsigned char* cardno,
                                          unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd_again_encrypt2, {.keyno = keyno, .cardno = cardno}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd_encrypt_new2(int icdev, unsigned char keyno, const unsigned char* cardno, int mode,
                                        unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd_encrypt_new2, {.mode = mode, .keyno = keyno, .cardno = cardno}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL pwdkb_getpwd_encrypt_new2_WaitNextKeyPress(int icdev, unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return enter_pin(icdev, form::getpwd_encrypt_new2_next_key, {}, rlen, rdata);
}
