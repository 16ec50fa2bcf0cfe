// The AT88SC1604 zone map and exports.
#include "cards/at88sc1604.h"

#include <vector>

#include "link/command.h"
#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"

namespace qz::cards::at88sc1604 {
namespace {

constexpr std::size_t short_reply = 160;

constexpr MemoryCommand read{.instruction = 0x90, .yield = Yield::reply, .reply_capacity = 1600};
constexpr MemoryCommand write{.instruction = 0x91, .reply_capacity = short_reply};
constexpr MemoryCommand code_write{.instruction = 0x92, .reply_capacity = short_reply};
constexpr MemoryCommand erase{.instruction = 0x93, .reply_capacity = short_reply};
constexpr MemoryCommand code_check{.instruction = 0x94, .reply_capacity = short_reply};
constexpr MemoryCommand erase_key_check{.instruction = 0x95, .reply_capacity = short_reply};
constexpr MemoryCommand fake_fuse{.instruction = 0x96, .reply_capacity = short_reply};
constexpr MemoryCommand personalise{.instruction = 0x97, .reply_capacity = short_reply};

// An erase gets up to 30 s; the write gap stays 10 ms afterwards.
constexpr std::uint32_t erase_read_ms = 30000;
constexpr std::uint32_t erase_write_gap_ms = 10;
constexpr std::uint32_t after_erase_read_ms = 5000;

// Optionally the zone byte, then the address and the length.
std::vector<std::uint8_t> arguments(std::optional<int> zone, unsigned address, unsigned length) {
    std::vector<std::uint8_t> bytes;
    if (zone) bytes.push_back(static_cast<std::uint8_t>(*zone));
    for (unsigned value : {address, length}) {
        const auto two = high_first(value);
        bytes.insert(bytes.end(), two.begin(), two.end());
    }
    return bytes;
}

int erase_range(int icdev, int zone, unsigned address, unsigned length) {
    const link::TimeoutsForCommand timeouts(erase_read_ms, erase_write_gap_ms, after_erase_read_ms, erase_write_gap_ms);
    return send_memory_command(icdev, erase, {.arguments = arguments(zone, address, length)});
}

// A code check or write of the code at `address`, carrying its 2 bytes.
int code_command(int icdev, const MemoryCommand& command, int zone, std::optional<unsigned> address,
                 const unsigned char* data) {
    if (!address) return link::status_bad_argument;
    return send_memory_command(
        icdev, command, {.arguments = arguments(zone, *address, code_length), .data = data, .data_length = code_length});
}

}  // namespace

bool range_fits(int zone, int offset, int length, Access access) {
    if (zone < 0 || zone >= static_cast<int>(zones.size()) || offset < 0 || length < 1) return false;
    const Zone& z = zones[static_cast<std::size_t>(zone)];
    const auto first = static_cast<int>(access == Access::read ? z.read_first : z.write_first);
    return offset >= first && offset <= static_cast<int>(z.last) &&
           length <= static_cast<int>(z.last) + 1 - offset;
}

std::optional<unsigned> code_address(int selector) {
    constexpr int zone_codes = static_cast<int>(zones.size()) - 1;
    if (selector < 0 || selector >= code_selectors) return std::nullopt;
    if (selector < zone_codes) return zones[static_cast<std::size_t>(selector)].code_at;
    return zones[static_cast<std::size_t>(selector - zone_codes + 1)].erase_key_at;
}

}  // namespace qz::cards::at88sc1604

namespace at88sc1604 = qz::cards::at88sc1604;
using at88sc1604::Access;
using qz::cards::send_memory_command;
using qz::link::status_bad_argument;

QZ_32_API int QZ_32_CALL srd_1604(int icdev, int zone, int offset, int length, unsigned char* out) {
    const qz::link::ExportLock lock;
    if (!at88sc1604::range_fits(zone, offset, length, Access::read)) return status_bad_argument;
    return send_memory_command(icdev, at88sc1604::read,
                               {.arguments = at88sc1604::arguments(std::nullopt, offset, length), .out = out});
}

QZ_32_API int QZ_32_CALL swr_1604(int icdev, int zone, int offset, int length, const unsigned char* data) {
    const qz::link::ExportLock lock;
    if (!at88sc1604::range_fits(zone, offset, length, Access::write)) return status_bad_argument;
    return send_memory_command(icdev, at88sc1604::write,
                               {.arguments = at88sc1604::arguments(std::nullopt, offset, length),
                                .data = data,
                                .data_length = static_cast<std::size_t>(length)});
}

QZ_32_API int QZ_32_CALL ser_1604(int icdev, int zone, int offset, int length) {
    const qz::link::ExportLock lock;
    if (!at88sc1604::range_fits(zone, offset, length, Access::write)) return status_bad_argument;
    return at88sc1604::erase_range(icdev, zone, offset, length);
}

QZ_32_API int QZ_32_CALL wsc_1604(int icdev, int zone, int length, const unsigned char* data) {
    const qz::link::ExportLock lock;
    const auto address = at88sc1604::code_address(zone);
    if (length != at88sc1604::code_length || !address || data == nullptr) return status_bad_argument;
    const int result = at88sc1604::erase_range(icdev, zone, *address, at88sc1604::code_length);
    if (result != 0) return result;
    return at88sc1604::code_command(icdev, at88sc1604::code_write, zone, address, data);
}

QZ_32_API int QZ_32_CALL csc_1604(int icdev, int zone, int length, const unsigned char* data) {
    const qz::link::ExportLock lock;
    if (length != at88sc1604::code_length || zone < 0 || zone >= static_cast<int>(at88sc1604::zones.size()) - 1)
        return status_bad_argument;
    return at88sc1604::code_command(icdev, at88sc1604::code_check, zone,
                                    at88sc1604::zones[static_cast<std::size_t>(zone)].code_at, data);
}

QZ_32_API int QZ_32_CALL cesc_1604(int icdev, int zone, int length, const unsigned char* data) {
    const qz::link::ExportLock lock;
    if (length != at88sc1604::code_length || zone < 0 || zone >= static_cast<int>(at88sc1604::zones.size()))
        return status_bad_argument;
    return at88sc1604::code_command(icdev, at88sc1604::erase_key_check, zone,
                                    at88sc1604::zones[static_cast<std::size_t>(zone)].erase_key_at, data);
}

QZ_32_API int QZ_32_CALL fakefus_1604(int icdev, int value) {
    const qz::link::ExportLock lock;
    if (value != 0 && value != 1) return status_bad_argument;
    const std::array<std::uint8_t, 1> arguments{static_cast<std::uint8_t>(value)};
    return send_memory_command(icdev, at88sc1604::fake_fuse, {.arguments = arguments});
}

QZ_32_API int QZ_32_CALL psnl_1604(int icdev) {
    const qz::link::ExportLock lock;
    return send_memory_command(icdev, at88sc1604::personalise, {});
}
