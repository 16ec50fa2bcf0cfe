// The record commands of class D0, relayed to the terminal as they are.
#include <array>

#include "cards/memory_command.h"
#include "link/export_lock.h"
#include "qz_32.h"

namespace qz::cards {
namespace {

constexpr MemoryCommand open_record_command{.card_class = record_class, .instruction = 0x01, .reply_capacity = 60};
constexpr MemoryCommand close_record_command{.card_class = record_class, .instruction = 0x02, .reply_capacity = 60};
constexpr MemoryCommand nt_record_command{
    .card_class = record_class, .instruction = 0x03, .yield = Yield::reply, .reply_capacity = 300};

}  // namespace
}  // namespace qz::cards

QZ_32_API int QZ_32_CALL open_record(int icdev) {
    const qz::link::ExportLock lock;
    return qz::cards::send_memory_command(icdev, qz::cards::open_record_command, {});
}

QZ_32_API int QZ_32_CALL close_record(int icdev) {
    const qz::link::ExportLock lock;
    return qz::cards::send_memory_command(icdev, qz::cards::close_record_command, {});
}

QZ_32_API int QZ_32_CALL nt_record(int icdev, unsigned int value, unsigned char* out) {
    const qz::link::ExportLock lock;
    const std::array<std::uint8_t, 4> arguments{static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
                                                static_cast<std::uint8_t>(value >> 16),
                                                static_cast<std::uint8_t>(value >> 24)};
    return qz::cards::send_memory_command(icdev, qz::cards::nt_record_command, {.arguments = arguments, .out = out});
}
