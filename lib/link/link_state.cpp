#include "link/link_state.h"

namespace qz::link {
namespace {
LinkState state;
}

LinkState& link_state() { return state; }

void set_link_timeouts(std::uint32_t read_ms, std::uint32_t write_gap_ms) {
    state.read_ms = read_ms;
    state.write_gap_ms = write_gap_ms;
}

void reset_link_state() { state = LinkState{}; }

}  // namespace qz::link
