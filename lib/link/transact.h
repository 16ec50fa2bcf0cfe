// The one blocking request and reply with the terminal.
//
// Thread safety: the caller holds ExportLock (every export that talks to the
// terminal does); two threads in a transaction on the same link would mix their
// frames.
#pragma once

#include <cstdint>
#include <span>

#include "platform/platform.h"

namespace qz::link {

// Wraps `payload` in a frame, sends it over the open link, receives and checks the
// reply frame. Result: 0, a LinkStatus, or the terminal's status
// -(status_hi * 256 + status_lo) cut to 16 bits (so 0x9000 gives +28672).
// On status 0, `reply_length` is LEN - 3 and that many reply data bytes are in
// `reply`; a reply that announces more than `reply` holds is refused with
// status_reply_too_long, one shorter than its three status bytes with
// status_reply_too_short. An `icdev` below 1 gives status_no_device and touches
// nothing; every other failure leaves `reply_length` 0 and reply[0] 0.
std::int16_t dev_transact(int icdev, std::span<const std::uint8_t> payload, int& reply_length,
                          std::span<std::uint8_t> reply);

// The transport steps under dev_transact, open for tests. `frame` of the
// receivers is a buffer of the frame buffer size; `total` receives the length.
int hid_send_frame(int handle, std::span<const std::uint8_t> frame);
int hid_write_report(int handle, std::span<const std::uint8_t> piece);
int hid_read_report(int handle, std::span<std::uint8_t> data);
int hid_receive_frame(int handle, std::size_t& total, std::span<std::uint8_t> frame);
int serial_send_frame(int handle, std::span<const std::uint8_t> frame);
// One byte within read_ms: received, timed_out when none came, or failed.
platform::ByteRead serial_read_byte(int handle, std::uint8_t& byte);
// A reply frame that stops coming ends at the first missing byte, with
// status_bad_etx: no reply waits longer than read_ms after its last byte.
int serial_receive_frame(int handle, std::size_t& total, std::span<std::uint8_t> frame);

}  // namespace qz::link
