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
#include <fcntl.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "link/link_state.h"
#include "link/transact.h"
#include "qz_32.h"
#include "sim/models/control/control_model.h"
#include "sim/endpoints/hid_endpoint.h"
#include "sim/endpoints/hidraw_fuse.h"
#include "sim/endpoints/pty_server.h"
#include "sim/core/scenario.h"
#include "sim/endpoints/serial_endpoint.h"
#include "sim/core/simulator.h"
#include "sim/core/unique_fd.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;

enum class Link { hid, serial };

constexpr std::size_t hid_piece = 254;
constexpr double hid_settle_ms = 5.0;
constexpr double line_baud = 115200.0;
constexpr double line_bits_per_byte = 10.0;
constexpr std::size_t frame_overhead = 5;
constexpr std::size_t largest_echo = 65522;

// The simulated terminal served on both links for the life of the program.
class ServedTerminal {
public:
    ServedTerminal()
        : folder_(make_folder()),
          terminal_(qz::sim::make_terminal(scenario_)),
          serial_(*terminal_),
          hid_(*terminal_, qz::sim::default_report_length),
          pty_(serial_, lock_, folder_ / "ports" / "COM1") {
        fs::create_directory(folder_ / "no-hid");
        try {
            fuse_ = std::make_unique<qz::sim::HidrawFuse>(hid_, lock_, folder_ / "hid");
            read_ms_ = measure_feature_read();
        } catch (const std::exception& error) {
            fuse_problem_ = std::string("no HID node (FUSE does not work here): ") + error.what();
        }
        setenv("QZ_32_PORTS_DIR", (folder_ / "ports").c_str(), 1);
        setenv("QZ_32_LOG_ROOT", (folder_ / "no-log").c_str(), 1);
    }
    ~ServedTerminal() {
        fuse_.reset();
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    // Points the library at the HID node, or at an empty HID folder so that
    // it takes the serial line. Empty on success, else why not.
    std::string offer(Link link) const {
        if (link == Link::hid && !fuse_) return fuse_problem_;
        setenv("QZ_32_HIDRAW_DIR", (folder_ / (link == Link::hid ? "hid" : "no-hid")).c_str(), 1);
        return {};
    }

    // Milliseconds one feature report request to the node takes.
    double feature_read_ms() const { return read_ms_; }

private:
    static fs::path make_folder() {
        std::string pattern = (fs::temp_directory_path() / "qz32-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
        return pattern;
    }

    // With no reply waiting the node refuses at once: what is left is the
    // request's way through the kernel and FUSE and back.
    double measure_feature_read() const {
        const qz::sim::UniqueFd node(::open(fuse_->node().c_str(), O_RDWR));
        if (!node) throw std::runtime_error("the node does not open");
        constexpr int requests = 2000;
        std::array<std::uint8_t, qz::sim::default_report_length> report{};
        const auto start = Clock::now();
        for (int i = 0; i < requests; ++i) {
            report[0] = qz::sim::feature_report_id;
            ::ioctl(node.get(), HIDIOCGFEATURE(report.size()), report.data());
        }
        return std::chrono::duration<double, std::milli>(Clock::now() - start).count() / requests;
    }

    fs::path folder_;
    const qz::sim::Scenario scenario_;  // every device as it is by default
    std::shared_ptr<qz::sim::Terminal> terminal_;
    std::mutex lock_;
    qz::sim::SerialEndpoint serial_;
    qz::sim::HidEndpoint hid_;
    qz::sim::PtyServer pty_;
    std::unique_ptr<qz::sim::HidrawFuse> fuse_;
    std::string fuse_problem_;
    double read_ms_ = 0;
};

ServedTerminal& served() {
    static ServedTerminal terminal;
    return terminal;
}

std::size_t reports_for(std::size_t frame) { return (frame + hid_piece - 1) / hid_piece; }

// The request payload: the version request, or an echo of `body` bytes.
Bytes request_payload(std::size_t body) {
    if (body == 0) return {0x00, 0x01, 0x00};
    Bytes payload(2 + body);
    payload[1] = qz::sim::echo_instruction;
    for (std::size_t i = 0; i < body; ++i) payload[2 + i] = static_cast<std::uint8_t>(i * 13 + 1);
    return payload;
}

void round_trip(benchmark::State& state, Link link, std::size_t body) {
    if (const std::string problem = served().offer(link); !problem.empty()) {
        state.SkipWithError(problem.c_str());
        return;
    }
    const int handle = open_device(0, 115200);
    if (handle <= 1) {
        state.SkipWithError("the simulated terminal does not open");
        return;
    }
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
