// The AT24C01A exports: a plain memory card read and written in one command each.
// They share the command bytes of the AT88SC1604 read and write, and the terminal
// tells them apart by the shorter head: one byte of length, then one of offset.
#include <array>

#include "cards/memory_command.h"
#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"

namespace qz::cards::at24c01a {
namespace {

// The highest address + 1 that a transfer may reach.
constexpr unsigned range_end = 127;

constexpr MemoryCommand read{.instruction = 0x90, .yield = Yield::reply, .reply_capacity = 300};
constexpr MemoryCommand write{.instruction = 0x91, .reply_capacity = 300};

int transfer(int icdev, const MemoryCommand& command, unsigned offset, unsigned length, const unsigned char* data,
             unsigned char* out) {
    if (offset + length > range_end) return link::status_bad_argument;
    const std::array<std::uint8_t, 2> arguments{static_cast<std::uint8_t>(length), static_cast<std::uint8_t>(offset)};
    return send_memory_command(
        icdev, command,
        {.arguments = arguments, .data = data, .data_length = command.yield == Yield::nothing ? length : 0, .out = out});
}

}  // namespace
}  // namespace qz::cards::at24c01a

QZ_32_API int QZ_32_CALL at24c01a_read(int icdev, unsigned short offset, unsigned short length, unsigned char* out) {
    const qz::link::ExportLock lock;
    return qz::cards::at24c01a::transfer(icdev, qz::cards::at24c01a::read, offset, length, nullptr, out);
}

QZ_32_API int QZ_32_CALL at24c01a_write(int icdev, unsigned short offset, unsigned short length, const unsigned char* data) {
    const qz::link::ExportLock lock;
    return qz::cards::at24c01a::transfer(icdev, qz::cards::at24c01a::write, offset, length, data, nullptr);
}
