// Round trips through the library's real Linux backends to the simulated
// terminal, served in this process on a pseudo-terminal and as a FUSE hidraw
// node: a small command (00 01 00) and the largest frame each way (the
// simulator's echo, 00 E0, of 65522 bytes).
//
// Each is set against the floor the link's own pacing sets. On HID every
// written report is followed by a 5 ms pause (plus the write gap, 0 after
// open_device), and every report read is one feature request to the node,
// whose cost is measured once here. A pseudo-terminal has no speed, so the
// serial floor is the time the same bytes take on a line at the 115200 baud
// the terminal is opened with (8N1: 10 bits a byte): a ratio below 1 is the
// pty being faster than any real line.
//
// Counters: floor_ms per round trip, ratio = measured / floor, reports each way.
#include <benchmark/benchmark.h>

#include <chrono>
#include <string>
#include <vector>

#include "link/link_state.h"
#include "link/transact.h"
#include "qz_32.h"
#include "served_terminal.h"
#include "sim/models/control/control_model.h"

namespace {

using namespace qz::bench;
using Clock = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;

constexpr double line_baud = 115200.0;
constexpr double line_bits_per_byte = 10.0;
constexpr std::size_t largest_echo = 65522;

// The request payload: the version request, or an echo of `body` bytes.
Bytes request_payload(std::size_t body) {
    if (body == 0) return {0x00, 0x01, 0x00};
    Bytes payload(2 + body);
    payload[1] = qz::sim::echo_instruction;
    for (std::size_t i = 0; i < body; ++i) payload[2 + i] = static_cast<std::uint8_t>(i * 13 + 1);
    return payload;
}

void round_trip(benchmark::State& state, Link link, std::size_t body) {
    const int handle = open_served(state, link);
    if (handle == 0) return;
    const Bytes payload = request_payload(body);
    const std::size_t reply_data = body == 0 ? qz::sim::default_version_text.size() : body;
    std::vector<std::uint8_t> reply(reply_data + 16);
    const auto start = Clock::now();
    for (auto _ : state) {
        int length = 0;
        if (qz::link::dev_transact(handle, payload, length, reply) != 0 ||
            static_cast<std::size_t>(length) != reply_data) {
            state.SkipWithError("the round trip failed");
            break;
        }
    }
    const double measured_ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count() /
                               static_cast<double>(std::max<benchmark::IterationCount>(state.iterations(), 1));
    close_device(handle);

    const std::size_t request_frame = payload.size() + frame_overhead;
    const std::size_t reply_frame = reply_data + 3 + frame_overhead;
    double floor_ms = 0;
    if (link == Link::hid) {
        const double gap_ms = qz::link::link_state().write_gap_ms;
        floor_ms = static_cast<double>(reports_for(request_frame)) * (hid_settle_ms + gap_ms) +
                   static_cast<double>(reports_for(reply_frame)) * served().feature_read_ms();
        state.counters["reports_out"] = static_cast<double>(reports_for(request_frame));
        state.counters["reports_in"] = static_cast<double>(reports_for(reply_frame));
        state.counters["read_us"] = served().feature_read_ms() * 1000;
    } else {
        floor_ms = static_cast<double>(request_frame + reply_frame) * line_bits_per_byte / line_baud * 1000;
    }
    state.counters["floor_ms"] = floor_ms;
    state.counters["ratio"] = measured_ms / floor_ms;
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(request_frame + reply_frame));
}

BENCHMARK_CAPTURE(round_trip, hid_version, Link::hid, 0)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(round_trip, serial_version, Link::serial, 0)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(round_trip, hid_echo_64k, Link::hid, largest_echo)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);
BENCHMARK_CAPTURE(round_trip, serial_echo_64k, Link::serial, largest_echo)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(5);

}  // namespace
