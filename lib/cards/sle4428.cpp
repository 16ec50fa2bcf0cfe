// The SLE4428 exports and their chunked transfers.
#include "cards/sle4428.h"

#include <algorithm>
#include <array>

#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"

namespace qz::cards::sle4428 {

int transfer(int icdev, const ChunkedCommand& chunked, unsigned offset, unsigned length, const unsigned char* data,
             unsigned char* out) {
    if (length == 0 || offset + length > memory_size) return link::status_bad_argument;
    const bool reads = chunked.command.yield != Yield::nothing;
    for (unsigned done = 0, chunk = 0; done < length; done += chunked.chunk_size, ++chunk) {
        const unsigned count = std::min(chunked.chunk_size, length - done);
        const auto offset_bytes = low_first(offset + done);
        const auto count_bytes = high_first(count);
        const std::array<std::uint8_t, 4> arguments{offset_bytes[0], offset_bytes[1], count_bytes[0], count_bytes[1]};
        const std::size_t room = chunk * stride;
        const int result = send_memory_command(
            icdev, chunked.command,
            {.arguments = arguments,
             .data = reads || data == nullptr ? nullptr : data + room,
             .data_length = reads ? 0 : count,
             .out = reads && out != nullptr ? out + room : nullptr});
        if (result != 0) return result;
    }
    return 0;
}

}  // namespace qz::cards::sle4428

namespace sle4428 = qz::cards::sle4428;
using qz::cards::send_memory_command;

QZ_32_API int QZ_32_CALL sle4428_read(int icdev, unsigned short offset, unsigned short length, unsigned char* out) {
    const qz::link::ExportLock lock;
    return sle4428::transfer(icdev, sle4428::read, offset, length, nullptr, out);
}

QZ_32_API int QZ_32_CALL sle4428_write(int icdev, unsigned short offset, unsigned short length, const unsigned char* data) {
    const qz::link::ExportLock lock;
    return sle4428::transfer(icdev, sle4428::write, offset, length, data, nullptr);
}

QZ_32_API int QZ_32_CALL sle4428_probit_readdata(int icdev, unsigned short offset, unsigned short length, unsigned char* out) {
    const qz::link::ExportLock lock;
    return sle4428::transfer(icdev, sle4428::protection_read, offset, length, nullptr, out);
}

QZ_32_API int QZ_32_CALL sle4428_probit_writedata(int icdev, unsigned short offset, unsigned short length,
                                       const unsigned char* data) {
    const qz::link::ExportLock lock;
    return sle4428::transfer(icdev, sle4428::protection_write, offset, length, data, nullptr);
}

QZ_32_API int QZ_32_CALL sle4428_pwd_check(int icdev, const unsigned char* psc) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, sle4428::psc_check, {.data = psc});
}

QZ_32_API int QZ_32_CALL sle4428_pwd_modify(int icdev, const unsigned char* psc) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, sle4428::psc_modify, {.data = psc});
}

QZ_32_API int QZ_32_CALL sle4428_errcount_read(int icdev, unsigned char* out) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, sle4428::error_count_read, {.out = out});
}
