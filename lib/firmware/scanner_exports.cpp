// The barcode scanner: reading codes, where its output goes, its version and its
// firmware upgrade.
#include <algorithm>

#include "firmware/scanner_loader.h"
#include "firmware/scanner_upgrade.h"
#include "link/command.h"
#include "link/export_lock.h"
#include "qz_32.h"

namespace {

using qz::link::Payload;
using qz::link::status_bad_argument;

using qz::firmware::scanner_class;
constexpr std::uint8_t read_code = 0x01;
constexpr std::uint8_t read_continuously = qz::firmware::scanner_read_continuously;
constexpr std::uint8_t choose_output = 0x04;
constexpr unsigned char shortest_wait = 2;
constexpr unsigned char longest_wait = 10;

bool wait_in_range(unsigned char wait) { return wait >= shortest_wait && wait <= longest_wait; }

}  // namespace

QZ_32_API int QZ_32_CALL get_barcode(int icdev, unsigned char wait, unsigned char* length, unsigned char* data) {
    const qz::link::ExportLock lock;
    if (!wait_in_range(wait) || length == nullptr || data == nullptr) return status_bad_argument;
    qz::link::Reply<160> reply;
    const int result = qz::link::transact(icdev, Payload{scanner_class, read_code, 0x00, wait}, reply);
    if (result == 0) {
        std::copy(reply.data().begin(), reply.data().end(), data);
        *length = static_cast<unsigned char>(reply.data().size());
    }
    return result;
}

QZ_32_API int QZ_32_CALL get_barcode_continuous(int icdev, unsigned char wait) {
    const qz::link::ExportLock lock;
    if (!wait_in_range(wait)) return status_bad_argument;
    qz::link::Reply<160> reply;
    return qz::link::transact(icdev, Payload{scanner_class, read_continuously, 0x00, wait}, reply);
}

QZ_32_API int QZ_32_CALL set_scaner_output(int icdev, unsigned char mode) {
    const qz::link::ExportLock lock;
    qz::link::Reply<160> reply;
    return qz::link::transact(icdev, Payload{scanner_class, choose_output, 0x00, mode}, reply);
}

QZ_32_API int QZ_32_CALL GetScanerVer(int icdev, unsigned int* length, unsigned char* version) {
    const qz::link::ExportLock lock;
    if (length == nullptr || version == nullptr) return status_bad_argument;
    std::vector<std::uint8_t> text;
    const int result = qz::firmware::scanner_version(icdev, text);
    if (result == 0 && !text.empty()) {
        *length = static_cast<unsigned int>(text.size());
        std::copy(text.begin(), text.end(), version);
    }
    return result;
}

QZ_32_API int QZ_32_CALL upgrade_scaner(int icdev, const char* path, qz_32_upgrade_progress_callback callback) {
    const qz::link::ExportLock lock;
    if (path == nullptr) return status_bad_argument;
    return qz::firmware::upgrade_scanner(icdev, path, callback);
}
