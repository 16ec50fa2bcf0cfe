// Statuses that the link itself produces. Any other non-zero result of a
// transaction is the terminal's status, negated and cut to 16 bits.
#pragma once

#include <cstdint>

namespace qz::link {

enum LinkStatus : std::int16_t {
    status_ok = 0,
    status_hid_write_refused = -1,
    status_hid_read_timeout = -17,
    status_bad_handle = -18,
    status_bad_argument = -19,
    status_port_in_use = -20,
    status_port_unavailable = -21,
    status_port_state_unreadable = -22,
    status_port_state_refused = -23,
    status_serial_write_failed = -24,
    status_serial_read_failed = -25,
    status_no_device = -33,
    status_no_stx = -34,
    status_bad_etx = -35,
    status_bad_bcc = -36,
    status_frame_too_long = -37,
    // The reply announces more data than the caller's reply area (or the
    // 65530-byte frame buffer) holds; the rest of the reply is not read.
    status_reply_too_long = -38,
    // The reply is shorter than its three status bytes, or carries fewer data
    // bytes than the command must hand to its caller.
    status_reply_too_short = -39,
};

}  // namespace qz::link
