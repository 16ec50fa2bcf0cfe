// Process-wide state of the one link to the terminal: which transport is in use
// and the time-outs that every transaction reads. One terminal per process.
#pragma once

#include <cstdint>

namespace qz::link {

enum class LinkKind : std::uint8_t { none = 0, hid = 1, serial = 2 };

struct LinkState {
    LinkKind kind = LinkKind::hid;
    std::uint32_t read_ms = 5000;       // how long a read waits
    std::uint32_t write_gap_ms = 1000;  // wait before each HID report is written
    std::uint16_t hid_report_length = 0;  // feature report length, report id included
};

LinkState& link_state();

// Sets the two time-outs for all transactions that follow.
void set_link_timeouts(std::uint32_t read_ms, std::uint32_t write_gap_ms);

// Puts the link state back to its values at load (for tests).
void reset_link_state();

}  // namespace qz::link
