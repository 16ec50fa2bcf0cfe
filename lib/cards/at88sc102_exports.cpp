// The AT88SC102 exports: each a row of the command table in at88sc102.h.
#include "cards/at88sc102.h"
#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"

namespace at88sc102 = qz::cards::at88sc102;
using qz::cards::send_memory_command;

QZ_32_API int QZ_32_CALL at88sc102_pwd_check(int icdev, const unsigned char* data) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::code_check, {.data = data});
}

QZ_32_API int QZ_32_CALL at88sc102_pwd_modify(int icdev, const unsigned char* data) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::code_modify, {.data = data});
}

QZ_32_API int QZ_32_CALL at88sc102_pwd_read(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::code_read, {.out = out});
}

QZ_32_API int QZ_32_CALL at88sc102_ua1_epwd_check(int icdev, unsigned char* data) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::zone1_key_check, {.data = data, .out = data});
}

QZ_32_API int QZ_32_CALL at88sc102_ua2_epwd_check(int icdev, const unsigned char* data) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::zone2_key_check, {.data = data});
}

QZ_32_API int QZ_32_CALL at88sc102_ua1_epwd_modify(int icdev, const unsigned char* data) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::zone1_key_modify, {.data = data});
}

QZ_32_API int QZ_32_CALL at88sc102_ua2_epwd_modify(int icdev, const unsigned char* data) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::zone2_key_modify, {.data = data});
}

QZ_32_API int QZ_32_CALL at88sc102_ua1_epwd_read(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::zone1_key_read, {.out = out});
}

QZ_32_API int QZ_32_CALL at88sc102_ua2_epwd_read(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::zone2_key_read, {.out = out});
}

QZ_32_API int QZ_32_CALL at88sc102_pwd_errorcount(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::code_error_count, {.out = out});
}

QZ_32_API int QZ_32_CALL at88sc102_ua2_fusecount(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::zone2_fuse_count, {.out = out});
}

QZ_32_API int QZ_32_CALL at88sc102_Anafuse(int icdev) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::anafuse, {});
}

QZ_32_API int QZ_32_CALL at88sc102_Anafuse_cancel(int icdev) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::anafuse_cancel, {});
}

QZ_32_API int QZ_32_CALL at88sc102_fuse_issuerfuse(int icdev) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::issuer_fuse, {});
}

QZ_32_API int QZ_32_CALL at88sc102_fuse_ec2enfuse(int icdev) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::ec2en_fuse, {});
}

QZ_32_API int QZ_32_CALL at88sc102_is102(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::type_read, {.out = out});
}

QZ_32_API int QZ_32_CALL at88sc102_issuer_write(int icdev, const unsigned char* data) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::issuer_write, {.data = data});
}

QZ_32_API int QZ_32_CALL at88sc102_issuer_read(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::issuer_read, {.out = out});
}

QZ_32_API int QZ_32_CALL at88sc102_protect_write(int icdev, const unsigned char* data) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::protect_write, {.data = data});
}

QZ_32_API int QZ_32_CALL at88sc102_protect_read(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc102::protect_read, {.out = out});
}

QZ_32_API int QZ_32_CALL at88sc102_probit_clr(int icdev, unsigned char sel) {
    const qz::link::ExportLock lock;
    const auto command = at88sc102::protection_clear.pick(sel);
    if (!command) return qz::link::status_bad_argument;
    return send_memory_command(icdev, *command, {});
}

QZ_32_API int QZ_32_CALL at88sc102_ua1_readdata(int icdev, unsigned char offset, unsigned char length, unsigned char* out) {
    const qz::link::ExportLock lock;
    return at88sc102::zone_transfer(icdev, at88sc102::zone1_read, offset, length, nullptr, out);
}

QZ_32_API int QZ_32_CALL at88sc102_ua2_readdata(int icdev, unsigned char offset, unsigned char length, unsigned char* out) {
    const qz::link::ExportLock lock;
    return at88sc102::zone_transfer(icdev, at88sc102::zone2_read, offset, length, nullptr, out);
}

QZ_32_API int QZ_32_CALL at88sc102_ua1_modifydata(int icdev, unsigned char offset, unsigned char length,
                                       const unsigned char* data) {
    const qz::link::ExportLock lock;
    return at88sc102::zone_transfer(icdev, at88sc102::zone1_modify, offset, length, data, nullptr);
}

QZ_32_API int QZ_32_CALL at88sc102_ua2_modifydata(int icdev, unsigned char sel, unsigned char offset, unsigned char length,
                                       const unsigned char* data) {
    const qz::link::ExportLock lock;
    return at88sc102::zone_transfer(icdev, at88sc102::zone2_modify.pick(sel), offset, length, data, nullptr);
}

QZ_32_API int QZ_32_CALL at88sc102_ua1_clrdata(int icdev) {
    const qz::link::ExportLock lock;
    return at88sc102::erase_zone(icdev, at88sc102::zone1_erase, at88sc102::zone1_read);
}

QZ_32_API int QZ_32_CALL at88sc102_ua2_clrdata(int icdev, unsigned char sel) {
    const qz::link::ExportLock lock;
    return at88sc102::erase_zone(icdev, at88sc102::zone2_erase.pick(sel), at88sc102::zone2_read);
}
