#include "served_terminal.h"

#include <fcntl.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <stdexcept>

#include "qz_32.h"
#include "sim/core/simulator.h"
#include "sim/core/unique_fd.h"

namespace qz::bench {
namespace {

namespace fs = std::filesystem;

fs::path make_folder() {
    std::string pattern = (fs::temp_directory_path() / "qz32-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    return pattern;
}

}  // namespace

ServedTerminal::ServedTerminal()
    : folder_(make_folder()),
      terminal_(sim::make_terminal(scenario_)),
      serial_(*terminal_),
      hid_(*terminal_, sim::default_report_length),
      pty_(serial_, lock_, folder_ / "ports" / "COM1") {
    fs::create_directory(folder_ / "no-hid");
    try {
        fuse_ = std::make_unique<sim::HidrawFuse>(hid_, lock_, folder_ / "hid");
        read_ms_ = measure_feature_read();
    } catch (const std::exception& error) {
        fuse_problem_ = std::string("no HID node (FUSE does not work here): ") + error.what();
    }
    setenv("QZ_32_PORTS_DIR", (folder_ / "ports").c_str(), 1);
    setenv("QZ_32_LOG_ROOT", (folder_ / "no-log").c_str(), 1);
}

ServedTerminal::~ServedTerminal() {
    fuse_.reset();
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

std::string ServedTerminal::offer(Link link) const {
    if (link == Link::hid && !fuse_) return fuse_problem_;
    setenv("QZ_32_HIDRAW_DIR", (folder_ / (link == Link::hid ? "hid" : "no-hid")).c_str(), 1);
    return {};
}

// With no reply waiting the node refuses at once: what is left is the
// request's way through the kernel and FUSE and back.
double ServedTerminal::measure_feature_read() const {
    const sim::UniqueFd node(::open(fuse_->node().c_str(), O_RDWR));
    if (!node) throw std::runtime_error("the node does not open");
    constexpr int requests = 2000;
    std::array<std::uint8_t, sim::default_report_length> report{};
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < requests; ++i) {
        report[0] = sim::feature_report_id;
        ::ioctl(node.get(), HIDIOCGFEATURE(report.size()), report.data());
    }
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count() / requests;
}

ServedTerminal& served() {
    static ServedTerminal terminal;
    return terminal;
}

int open_served(benchmark::State& state, Link link) {
    if (const std::string problem = served().offer(link); !problem.empty()) {
        state.SkipWithError(problem.c_str());
        return 0;
    }
    const int handle = open_device(0, 115200);
    if (handle > 1) return handle;
    state.SkipWithError("the simulated terminal does not open");
    return 0;
}

}  // namespace qz::bench
