// The simulated terminal served for the life of a benchmark program on a
// pseudo-terminal and, where FUSE works, as a hidraw node, with what the link's
// pacing costs: every HID report written is followed by a 5 ms pause, and every
// report read is one feature request to the node.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

#include "sim/core/scenario.h"
#include "sim/core/terminal.h"
#include "sim/endpoints/hid_endpoint.h"
#include "sim/endpoints/hidraw_fuse.h"
#include "sim/endpoints/pty_server.h"
#include "sim/endpoints/serial_endpoint.h"

namespace qz::bench {

enum class Link { hid, serial };

inline constexpr std::size_t hid_piece = 254;
inline constexpr double hid_settle_ms = 5.0;
inline constexpr std::size_t frame_overhead = 5;

class ServedTerminal {
public:
    ServedTerminal();
    ~ServedTerminal();

    // Points the library at the HID node, or at an empty HID folder so that
    // it takes the serial line. Empty on success, else why not.
    std::string offer(Link link) const;

    // Milliseconds one feature report request to the node takes.
    double feature_read_ms() const { return read_ms_; }

    sim::Terminal& terminal() { return *terminal_; }

private:
    double measure_feature_read() const;

    std::filesystem::path folder_;
    const sim::Scenario scenario_;  // every device as it is by default
    std::shared_ptr<sim::Terminal> terminal_;
    std::mutex lock_;
    sim::SerialEndpoint serial_;
    sim::HidEndpoint hid_;
    sim::PtyServer pty_;
    std::unique_ptr<sim::HidrawFuse> fuse_;
    std::string fuse_problem_;
    double read_ms_ = 0;
};

ServedTerminal& served();

// Opens the library on `link` to the served terminal: the handle, or 0 after
// marking the benchmark skipped with the reason.
int open_served(benchmark::State& state, Link link);

// HID reports a frame of `frame` bytes takes.
inline std::size_t reports_for(std::size_t frame) { return (frame + hid_piece - 1) / hid_piece; }

}  // namespace qz::bench
