// The screen's commands that stand on their own: fill, clear, page, sleep time
// and vendor byte.
#include <algorithm>
#include <cstring>

#include "link/export_lock.h"
#include "link/status.h"
#include "qz_32.h"
#include "screen/colour.h"
#include "screen/screen_commands.h"

namespace {

using qz::screen::Instruction;
using qz::screen::screen_payload;
using qz::screen::send_screen_command;

constexpr std::uint32_t page_read_ms = 4000;
constexpr std::uint32_t page_write_gap_ms = 10;
constexpr std::uint32_t after_page_read_ms = 2000;
constexpr int max_sleep_time = 0xFFFF;
constexpr std::uint8_t vendor_read = 0x00;
constexpr std::uint8_t vendor_write = 0x01;
constexpr std::size_t vendor_reply_capacity = 1024;

}  // namespace

QZ_32_API int QZ_32_CALL SetFullScreenColor(int icdev, const char* color) {
    const qz::link::ExportLock lock;
    const auto word = qz::screen::parse_color_string(color);
    if (!word) return qz::link::status_bad_argument;
    return send_screen_command(icdev, screen_payload(Instruction::fill).add_be16(*word));
}

QZ_32_API int QZ_32_CALL ClearFullScreen(int icdev) {
    const qz::link::ExportLock lock;
    return send_screen_command(icdev, screen_payload(Instruction::clear).add_be16(0xFFFF).add_zeros(3));
}

QZ_32_API int QZ_32_CALL ActiveShowPic(int icdev, int page) {
    const qz::link::ExportLock lock;
    if (page < 0 || page >= qz::screen::page_count) return qz::link::status_bad_argument;
    const qz::link::TimeoutsForCommand timeouts(page_read_ms, page_write_gap_ms, after_page_read_ms, 0);
    return send_screen_command(icdev, screen_payload(Instruction::activate_page).add(static_cast<std::uint8_t>(page)));
}

QZ_32_API int QZ_32_CALL SetAutoSleepTime(int icdev, int time) {
    const qz::link::ExportLock lock;
    if (time < 0 || time > max_sleep_time) return qz::link::status_bad_argument;
    return send_screen_command(icdev, screen_payload(Instruction::sleep_time).add_be16(static_cast<std::uint16_t>(time)));
}

QZ_32_API int QZ_32_CALL SetScreenVendor(int icdev, unsigned char vendor) {
    const qz::link::ExportLock lock;
    return send_screen_command(icdev, screen_payload(Instruction::vendor).add(vendor_write).add(vendor));
}

QZ_32_API int QZ_32_CALL GetScreenVendor(int icdev, char* vendor) {
    const qz::link::ExportLock lock;
    if (vendor == nullptr) return qz::link::status_bad_argument;
    qz::link::Reply<vendor_reply_capacity> reply;
    const int result = qz::link::transact(icdev, screen_payload(Instruction::vendor).add(vendor_read), reply);
    const auto data = result == 0 ? reply.data() : std::span<const std::uint8_t>{};
    std::copy(data.begin(), data.end(), vendor);
    vendor[data.size()] = '\0';
    return result;
}
