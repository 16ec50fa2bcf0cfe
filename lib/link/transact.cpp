#include "link/transact.h"

#include <algorithm>
#include <array>
#include <vector>

#include "link/frame.h"
#include "link/link_state.h"
#include "link/log.h"
#include "link/status.h"
#include "platform/platform.h"

namespace qz::link {
namespace {

constexpr std::uint8_t hid_report_id = 6;
constexpr std::size_t hid_report_buffer = 300;
constexpr std::size_t hid_piece = 254;
constexpr std::size_t hid_report_data = hid_report_buffer - 1;
constexpr std::size_t stx_search_end = 254;  // last offset searched for STX
constexpr int stx_search_reads = 3;
constexpr std::uint32_t hid_write_settle_ms = 5;

// Length handed to the platform for one feature report. A device that claims a
// longer report than the 300-byte report buffer is not the terminal; clamping
// keeps the buffer intact.
std::size_t report_length() {
    return std::min<std::size_t>(link_state().hid_report_length, hid_report_buffer);
}

std::uint32_t elapsed_since(std::uint32_t start) { return platform::current().tick_ms() - start; }

// Frame buffer of the calling thread: the request is built in it and the reply
// received into it, so a transaction allocates nothing after the first.
std::span<std::uint8_t> frame_buffer() {
    thread_local std::vector<std::uint8_t> buffer(max_frame_length);
    return buffer;
}

}  // namespace

int hid_write_report(int handle, std::span<const std::uint8_t> piece) {
    if (handle < 1) return status_bad_handle;
    auto& os = platform::current();
    const std::uint32_t start = os.tick_ms();
    for (std::uint32_t waited; (waited = elapsed_since(start)) < link_state().write_gap_ms;)
        os.sleep_ms(link_state().write_gap_ms - waited);

    std::array<std::uint8_t, hid_report_buffer> report{};
    report[0] = hid_report_id;
    std::copy_n(piece.begin(), std::min(piece.size(), hid_piece), report.begin() + 1);
    // The terminal takes a report in within 5 ms of the start of its write.
    const std::uint64_t written_at = os.tick_us();
    if (!os.hid_set_feature(handle, std::span(report).first(report_length()))) return status_hid_write_refused;
    os.sleep_until_us(written_at + hid_write_settle_ms * 1000);
    return status_ok;
}

int hid_read_report(int handle, std::span<std::uint8_t> data) {
    if (handle < 1) return status_bad_handle;
    auto& os = platform::current();
    const std::uint32_t start = os.tick_ms();
    for (;;) {
        std::array<std::uint8_t, hid_report_buffer> report{};
        report[0] = hid_report_id;
        if (os.hid_get_feature(handle, std::span(report).first(report_length())) && report[0] == hid_report_id) {
            std::copy_n(report.begin() + 1, std::min(data.size(), hid_report_data), data.begin());
            return status_ok;
        }
        if (elapsed_since(start) >= link_state().read_ms) return status_hid_read_timeout;
    }
}

int hid_send_frame(int handle, std::span<const std::uint8_t> frame) {
    if (frame.size() > max_frame_length) return status_frame_too_long;
    for (std::size_t offset = 0; offset < frame.size(); offset += hid_piece) {
        const int status = hid_write_report(handle, frame.subspan(offset, std::min(hid_piece, frame.size() - offset)));
        if (status != status_ok) return status;
    }
    return status_ok;
}

int hid_receive_frame(int handle, std::size_t& total, std::span<std::uint8_t> frame) {
    // One report's data, followed by a piece's worth of zeros: a frame whose STX
    // lies late in the first report reads zeros past the report's end.
    std::array<std::uint8_t, hid_report_data + hid_piece> report{};
    std::size_t start = 0;
    for (int read = 0;; ++read) {
        if (read == stx_search_reads) return status_no_stx;
        std::fill(report.begin(), report.end(), 0);
        const int status = hid_read_report(handle, std::span(report).first(hid_report_data));
        if (status != status_ok) return status;
        const auto* hit = std::find(report.begin(), report.begin() + stx_search_end + 1, stx);
        if (hit != report.begin() + stx_search_end + 1) {
            start = static_cast<std::size_t>(hit - report.begin());
            break;
        }
    }

    total = ((std::size_t{report[start + 1]} << 8) | report[start + 2]) + frame_overhead;
    if (total > frame.size()) return status_reply_too_long;
    std::size_t received = std::min(total, hid_piece);
    std::copy_n(report.begin() + static_cast<std::ptrdiff_t>(start), received, frame.begin());
    while (received < total) {
        const int status = hid_read_report(handle, std::span(report).first(hid_report_data));
        if (status != status_ok) return status;
        const std::size_t piece = std::min(hid_piece, total - received);
        std::copy_n(report.begin(), piece, frame.begin() + static_cast<std::ptrdiff_t>(received));
        received += piece;
    }

    if (frame[total - 1] != etx) return status_bad_etx;
    return frame_check(frame.subspan(3, total - 4));
}

int serial_send_frame(int handle, std::span<const std::uint8_t> frame) {
    auto& os = platform::current();
    os.serial_purge(handle);
    for (std::uint8_t byte : frame)
        if (!os.serial_write(handle, byte)) return status_serial_write_failed;
    return status_ok;
}

platform::ByteRead serial_read_byte(int handle, std::uint8_t& byte) {
    auto& os = platform::current();
    const std::uint32_t start = os.tick_ms();
    for (;;) {
        const platform::ByteRead read = os.serial_read(handle, byte);
        if (read != platform::ByteRead::timed_out || elapsed_since(start) >= link_state().read_ms) return read;
    }
}

namespace {

// Reads `part` one byte at a time and stops at the first byte that does not come.
// Gives the number of bytes that came, or status_serial_read_failed.
int serial_read_bytes(int handle, std::span<std::uint8_t> part) {
    for (std::size_t offset = 0; offset < part.size(); ++offset) {
        switch (serial_read_byte(handle, part[offset])) {
            case platform::ByteRead::received: break;
            case platform::ByteRead::timed_out: return static_cast<int>(offset);
            case platform::ByteRead::failed: return status_serial_read_failed;
        }
    }
    return static_cast<int>(part.size());
}

}  // namespace

int serial_receive_frame(int handle, std::size_t& total, std::span<std::uint8_t> frame) {
    // The head starts zeroed: a first byte that does not come is no STX, and a
    // length byte that does not come counts 0.
    std::fill_n(frame.begin(), 3, 0);
    total = 0;
    if (const int came = serial_read_bytes(handle, frame.first(1)); came < 0) return came;
    if (frame[0] != stx) return status_no_stx;
    const int length_bytes = serial_read_bytes(handle, frame.subspan(1, 2));
    if (length_bytes < 0) return length_bytes;

    total = ((std::size_t{frame[1]} << 8) | frame[2]) + frame_overhead;
    if (total > frame.size()) return status_reply_too_long;
    // The reading ends at the first byte that does not come: the frame then ends
    // without its ETX.
    if (length_bytes < 2) return status_bad_etx;
    const int rest = serial_read_bytes(handle, frame.subspan(3, total - 3));
    if (rest < 0) return rest;
    if (static_cast<std::size_t>(rest) < total - 3 || frame[total - 1] != etx) return status_bad_etx;
    return frame_check(frame.subspan(3, total - 4));
}

std::int16_t dev_transact(int icdev, std::span<const std::uint8_t> payload, int& reply_length,
                          std::span<std::uint8_t> reply) {
    if (icdev < 1) return status_no_device;
    reply_length = 0;
    if (!reply.empty()) reply[0] = 0;

    const bool hid = link_state().kind == LinkKind::hid;
    std::span<std::uint8_t> frame = frame_buffer();
    int status = status_frame_too_long;
    if (payload.size() <= max_payload_length) {
        const auto request = frame.first(payload.size() + frame_overhead);
        build_frame(payload, request);
        status = hid ? hid_send_frame(icdev, request) : serial_send_frame(icdev, request);
    }
    if (status != status_ok) {
        write_log(log_format("send return %d.", status));
        return static_cast<std::int16_t>(status);
    }

    // The reply frame may hold at most the reply area's worth of data.
    std::size_t total = 0;
    const auto receive_area = frame.first(std::min(frame.size(), reply.size() + frame_overhead + 3));
    status = hid ? hid_receive_frame(icdev, total, receive_area) : serial_receive_frame(icdev, total, receive_area);
    // A reply needs its three status bytes; a shorter one would give a negative length.
    if (status == status_ok && total < frame_overhead + 3) status = status_reply_too_short;
    if (status != status_ok) {
        write_log(log_format("receive return %d.", status));
        return static_cast<std::int16_t>(status);
    }

    if (frame[3] != 0 || frame[4] != 0) return static_cast<std::int16_t>(-(frame[3] * 256 + frame[4]));
    reply_length = static_cast<int>(total) - static_cast<int>(frame_overhead) - 3;
    if (reply_length > 0) std::copy_n(frame.begin() + 6, reply_length, reply.begin());
    return status_ok;
}

}  // namespace qz::link
