// The terminal keypad's exports: the general exchange and the four PIN entries.
#include "link/export_lock.h"
#include "link/status.h"
#include "pinpad/keypad.h"
#include "qz_32.h"

using qz::pinpad::EntryLetter;

QZ_32_API int QZ_32_CALL dev_pwdkb(int icdev, unsigned char timeout, unsigned char mode, unsigned char length,
                        const unsigned char* data, unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    if (data == nullptr && length != 0) return qz::link::status_bad_argument;
    return qz::pinpad::pwdkb_exchange(icdev, timeout, mode, {data, length}, rlen, rdata);
}

QZ_32_API int QZ_32_CALL dev_pwdkb_getpwd(int icdev, unsigned char timeout, unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return qz::pinpad::clear_entry(icdev, timeout, EntryLetter::first, rlen, rdata);
}

QZ_32_API int QZ_32_CALL dev_pwdkb_getpwd_again(int icdev, unsigned char timeout, unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return qz::pinpad::clear_entry(icdev, timeout, EntryLetter::again, rlen, rdata);
}

QZ_32_API int QZ_32_CALL dev_pwdkb_getpwd_encrypt(int icdev, unsigned char timeout, unsigned char* rlen, unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return qz::pinpad::protected_entry(icdev, timeout, EntryLetter::first, rlen, rdata);
}

QZ_32_API int QZ_32_CALL dev_pwdkb_getpwd_again_encrypt(int icdev, unsigned char timeout, unsigned char* rlen,
                                             unsigned char* rdata) {
    const qz::link::ExportLock lock;
    return qz::pinpad::protected_entry(icdev, timeout, EntryLetter::again, rlen, rdata);
}
