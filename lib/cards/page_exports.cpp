// ActiveCard and the page card families: the Ultralight class (MF_) and the NTAG215.
#include <array>

#include "cards/page_memory.h"
#include "link/command.h"
#include "link/export_lock.h"
#include "qz_32.h"

namespace pages = qz::cards::pages;
using qz::cards::Arguments;
using qz::link::ExportLock;

namespace {

constexpr std::uint32_t ntag_open_read_ms = 200;
constexpr std::uint32_t ntag_open_after_read_ms = 2000;

short result_of(int result) { return static_cast<short>(result); }

}  // namespace

QZ_32_API int QZ_32_CALL ActiveCard(int icdev, unsigned char mode, unsigned char* type, unsigned char* uid, unsigned char* ats,
                         unsigned char* ats_length) {
    const ExportLock lock;
    if (type == nullptr || uid == nullptr || ats == nullptr || ats_length == nullptr)
        return qz::link::status_bad_argument;
    return pages::activate_any(icdev, mode, type, uid, ats, ats_length);
}

QZ_32_API short QZ_32_CALL MF_OpenCard(int icdev, unsigned char mode, unsigned char* uid) {
    const ExportLock lock;
    return result_of(run(icdev, pages::mf_open, {mode}, uid));
}

QZ_32_API short QZ_32_CALL MF_Authentication(int icdev, const unsigned char* key, unsigned char length) {
    const ExportLock lock;
    if (length > pages::max_key_length) return pages::refused;
    return result_of(run(icdev, pages::mf_authenticate, Arguments{length}.add(key, length), nullptr));
}

QZ_32_API short QZ_32_CALL MF_Read(int icdev, unsigned char page, unsigned char* out) {
    const ExportLock lock;
    return result_of(run(icdev, pages::mf_read, {page}, out));
}

QZ_32_API short QZ_32_CALL MF_Write_4bytes(int icdev, unsigned char page, const unsigned char* data) {
    const ExportLock lock;
    return result_of(run(icdev, pages::mf_write, Arguments{page}.add(data, pages::page_size), nullptr));
}

QZ_32_API short QZ_32_CALL MF_WriteOTp(int icdev, const unsigned char* data) {
    const ExportLock lock;
    return result_of(run(icdev, pages::mf_write, Arguments{pages::otp_page}.add(data, pages::page_size), nullptr));
}

QZ_32_API short QZ_32_CALL MF_WriteLock(int icdev, unsigned char page) {
    const ExportLock lock;
    const auto bit = pages::lock_bit(page);
    if (!bit) return pages::refused;
    // Every other lock bit of the page goes out as 0.
    std::array<std::uint8_t, pages::page_size> bytes{};
    bytes[bit->byte] = bit->value;
    return result_of(run(icdev, pages::mf_write, Arguments{bit->page}.add(bytes.data(), bytes.size()), nullptr));
}

QZ_32_API short QZ_32_CALL NTAG215_OpenCard(int icdev, unsigned char* uid) {
    const ExportLock lock;
    const qz::link::TimeoutsForCommand timeouts(ntag_open_read_ms, 0, ntag_open_after_read_ms, 0);
    return result_of(run(icdev, pages::ntag_open, {0x00}, uid));
}

QZ_32_API short QZ_32_CALL NTAG215_Read(int icdev, unsigned char page, unsigned char* out) {
    const ExportLock lock;
    return result_of(run(icdev, pages::ntag_read, {page}, out));
}

QZ_32_API short QZ_32_CALL NTAG215_Write_4bytes(int icdev, unsigned char page, const unsigned char* data) {
    const ExportLock lock;
    return result_of(pages::ntag_write_page(icdev, page, data));
}

QZ_32_API short QZ_32_CALL NTAG215_Authentication(int icdev, const unsigned char* key, unsigned char length) {
    const ExportLock lock;
    if (length != pages::page_size) return pages::refused;
    return result_of(run(icdev, pages::ntag_authenticate, Arguments{}.add(key, pages::page_size), nullptr));
}

QZ_32_API short QZ_32_CALL NTAG215_ChangeKey(int icdev, const unsigned char* key, unsigned char length) {
    const ExportLock lock;
    if (length != pages::page_size) return pages::refused;
    return result_of(pages::ntag_write_page(icdev, pages::password_page, key));
}

QZ_32_API short QZ_32_CALL NTAG215_WriteLock(int icdev) {
    const ExportLock lock;
    return result_of(pages::ntag_write_page(icdev, pages::dynamic_lock_page, pages::dynamic_lock_bytes.data()));
}

QZ_32_API short QZ_32_CALL NTAG215_Init(int icdev, const unsigned char* key, const char* text) {
    const ExportLock lock;
    if (key == nullptr || text == nullptr) return pages::refused;
    return result_of(pages::personalise(icdev, key, text));
}

QZ_32_API short QZ_32_CALL NTAG215_ReadBaseInfo(int icdev, unsigned char* out) {
    const ExportLock lock;
    if (out == nullptr) return pages::refused;
    return result_of(pages::read_base_info(icdev, out));
}
