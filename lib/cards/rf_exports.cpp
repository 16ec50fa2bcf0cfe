// The rf_ family and the field's status queries: sector cards in the contactless field.
#include <array>
#include <cstring>
#include <vector>

#include "cards/card_output.h"
#include "cards/rf_memory.h"
#include "cards/value_block.h"
#include "link/export_lock.h"
#include "qz_32.h"
#include "reader/hex.h"

namespace rf = qz::cards::rf;
using qz::cards::Arguments;
using qz::link::ExportLock;

namespace {

constexpr int status_bad_hex = -1;
constexpr int status_antenna_no_handle = -22;
constexpr int status_antenna_failed = -23;
constexpr int status_antenna_state = -24;

}  // namespace

int qz::cards::rf::find_card(int icdev, std::uint8_t mode, unsigned char* serial) {
    return run(icdev, find, {mode}, serial);
}

QZ_32_API int QZ_32_CALL rf_reset(int icdev) {
    const ExportLock lock;
    return run(icdev, rf::reset_field, {}, nullptr);
}

QZ_32_API int QZ_32_CALL rf_card(int icdev, unsigned char mode, unsigned char* serial) {
    const ExportLock lock;
    return rf::find_card(icdev, mode, serial);
}

QZ_32_API int QZ_32_CALL rf_authentication_key(int icdev, unsigned char mode, unsigned char sector, const unsigned char* key) {
    const ExportLock lock;
    return run(icdev, rf::authenticate, Arguments{mode, sector}.add(key, rf::key_size), nullptr);
}

QZ_32_API int QZ_32_CALL rf_read(int icdev, unsigned char block, unsigned char* data) {
    const ExportLock lock;
    return run(icdev, rf::read_block, {block}, data);
}

QZ_32_API int QZ_32_CALL rf_read_hex(int icdev, unsigned char block, char* text) {
    const ExportLock lock;
    if (text == nullptr) return rf::refused;
    rf::Block bytes{};
    const int result = run(icdev, rf::read_block, {block}, bytes.data());
    if (result == 0) qz::cards::hand_over(qz::cards::Form::hex, bytes, text);
    return result;
}

QZ_32_API int QZ_32_CALL rf_write(int icdev, unsigned char block, const unsigned char* data) {
    const ExportLock lock;
    return run(icdev, rf::write_block, Arguments{block}.add(data, rf::block_size), nullptr);
}

QZ_32_API int QZ_32_CALL rf_write_hex(int icdev, unsigned char block, const char* text) {
    const ExportLock lock;
    if (text == nullptr) return rf::refused;
    // Only as far as the terminator: a short text fails on it as on any non-digit.
    const std::span digits(text, strnlen(text, 2 * rf::block_size));
    rf::Block bytes{};
    if (qz::reader::from_hex(digits, bytes) != bytes.size()) return status_bad_hex;
    return run(icdev, rf::write_block, Arguments{block}.add(bytes.data(), bytes.size()), nullptr);
}

QZ_32_API int QZ_32_CALL rf_initval(int icdev, unsigned char block, unsigned int value) {
    const ExportLock lock;
    const rf::Block bytes = rf::value_block(value, block);
    return run(icdev, rf::write_block, Arguments{block}.add(bytes.data(), bytes.size()), nullptr);
}

QZ_32_API int QZ_32_CALL rf_readval(int icdev, unsigned char block, unsigned int* value) {
    const ExportLock lock;
    if (value == nullptr) return rf::refused;
    return rf::read_value(icdev, block, *value);
}

QZ_32_API int QZ_32_CALL rf_increment(int icdev, unsigned char block, unsigned int value) {
    const ExportLock lock;
    return rf::change_value(icdev, block, rf::Change::increment, value);
}

QZ_32_API int QZ_32_CALL rf_decrement(int icdev, unsigned char block, unsigned int value) {
    const ExportLock lock;
    return rf::change_value(icdev, block, rf::Change::decrement, value);
}

QZ_32_API int QZ_32_CALL rf_transfer(int icdev, unsigned char block) {
    const ExportLock lock;
    return run(icdev, rf::transfer, {block}, nullptr);
}

QZ_32_API int QZ_32_CALL rf_restore(int icdev, unsigned char block) {
    const ExportLock lock;
    return run(icdev, rf::restore, {block}, nullptr);
}

QZ_32_API int QZ_32_CALL rf_terminal(int icdev) {
    const ExportLock lock;
    return run(icdev, rf::halt, {}, nullptr);
}

QZ_32_API int QZ_32_CALL rf_halt(int icdev) {
    const ExportLock lock;
    return run(icdev, rf::halt, {}, nullptr);
}

QZ_32_API int QZ_32_CALL rf_desele(int icdev) {
    const ExportLock lock;
    return run(icdev, rf::deselect, {}, nullptr);
}

QZ_32_API int QZ_32_CALL PICC_GetStatus(int icdev, unsigned char* status) {
    const ExportLock lock;
    return run(icdev, rf::field_status, {}, status);
}

QZ_32_API int QZ_32_CALL PICC_GetStatus_EX(int icdev, unsigned char* status) {
    const ExportLock lock;
    return run(icdev, rf::deselect_status, {}, status);
}

QZ_32_API int QZ_32_CALL rf_antenna(int icdev, unsigned char* status) {
    const ExportLock lock;
    if (icdev == 0 || icdev == -1) return status_antenna_no_handle;
    if (status == nullptr) return rf::refused;
    unsigned char state = 0;
    if (run(icdev, rf::antenna, {}, &state) != 0) return status_antenna_failed;
    *status = state;
    return state == 0 ? 0 : status_antenna_state;
}

QZ_32_API int QZ_32_CALL ReadMulCardUid(int icdev, unsigned char* count, unsigned char* uids) {
    const ExportLock lock;
    if (count == nullptr || uids == nullptr) return rf::refused;
    std::vector<std::uint8_t> reply;
    const int result = run_for_reply(icdev, rf::field_uids, {}, reply);
    if (result != 0) return result;
    *count = reply.empty() ? 0 : reply.front();
    if (!reply.empty()) std::copy(reply.begin() + 1, reply.end(), uids);
    return 0;
}
