// The SLE4442 exports.
#include "cards/sle4442.h"

#include <array>

#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"

namespace qz::cards::sle4442 {

int transfer(int icdev, const MemoryCommand& command, unsigned area_size, unsigned offset, unsigned length,
             const unsigned char* data, unsigned char* out) {
    if (offset + length > area_size) return link::status_bad_argument;
    const auto length_bytes = low_first(length);
    const std::array<std::uint8_t, 3> arguments{static_cast<std::uint8_t>(offset), length_bytes[0], length_bytes[1]};
    return send_memory_command(icdev, command,
                               {.arguments = arguments, .data = data,
                                .data_length = command.yield == Yield::nothing ? length : 0, .out = out});
}

}  // namespace qz::cards::sle4442

namespace sle4442 = qz::cards::sle4442;
using qz::cards::send_memory_command;

QZ_32_API int QZ_32_CALL sle4442_read(int icdev, unsigned char offset, unsigned short length, unsigned char* out) {
    const qz::link::ExportLock lock;
    return sle4442::transfer(icdev, sle4442::read, sle4442::main_size, offset, length, nullptr, out);
}

QZ_32_API int QZ_32_CALL sle4442_write(int icdev, unsigned char offset, unsigned short length, const unsigned char* data) {
    const qz::link::ExportLock lock;
    return sle4442::transfer(icdev, sle4442::write, sle4442::main_size, offset, length, data, nullptr);
}

QZ_32_API int QZ_32_CALL sle4442_probit_write(int icdev, unsigned char offset, unsigned short length,
                                   const unsigned char* data) {
    const qz::link::ExportLock lock;
    return sle4442::transfer(icdev, sle4442::protection_write, sle4442::protection_size, offset, length, data,
                             nullptr);
}

QZ_32_API int QZ_32_CALL sle4442_pwd_check(int icdev, const unsigned char* psc) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, sle4442::psc_check, {.data = psc});
}

QZ_32_API int QZ_32_CALL sle4442_pwd_modify(int icdev, const unsigned char* psc) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, sle4442::psc_modify, {.data = psc});
}

QZ_32_API int QZ_32_CALL sle4442_pwd_read(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, sle4442::psc_read, {.out = out});
}

QZ_32_API int QZ_32_CALL sle4442_probit_read(int icdev, unsigned char* rlen, unsigned char* out) {
    const qz::link::ExportLock lock;
    if (rlen == nullptr) return qz::link::status_bad_argument;
    return send_memory_command(icdev, sle4442::protection_read, {.out = out, .out_length = rlen});
}

QZ_32_API int QZ_32_CALL sle4442_errcount_read(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, sle4442::error_count_read, {.out = out});
}
