// Firmware work on the host.
//
// HexRead: the HEX reader on the text of a 1 MiB image in 32-byte records
// (goal: under 3 ms).
//
// KeyboardUpgrade, ScannerUpgrade: a whole upgrade of a 256 KiB image against
// the simulated keyboard or scanner in this process, on the simulated clock. The
// clock advances only by the waits the loaders prescribe and by the link's own
// pacing, so its advance is the floor a real upgrade cannot go below; the wall
// time the run takes is the host's share on top of it (the simulator's work
// included). Counters: floor_s, host_ms, over_floor_percent = host / floor
// (goal: at most 1).
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "firmware/intel_hex.h"
#include "link/link_state.h"
#include "qz_32.h"
#include "sim/core/scenario.h"
#include "sim/core/simulator.h"
#include "sim/endpoints/inprocess_platform.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
constexpr std::size_t upgrade_size = 256 * 1024;

Bytes image_of(std::size_t size) {
    Bytes image(size);
    for (std::size_t i = 0; i < size; ++i) image[i] = static_cast<std::uint8_t>(i * 31 + (i >> 9));
    return image;
}

std::string hex_text(const Bytes& image, std::size_t record) {
    std::string text;
    text.reserve(image.size() * 2 + image.size() / record * 13 + 16);
    char digits[16];
    for (std::size_t at = 0; at < image.size(); at += record) {
        const std::size_t count = std::min(record, image.size() - at);
        std::snprintf(digits, sizeof digits, ":%02X%04X00", static_cast<unsigned>(count),
                      static_cast<unsigned>(at & 0xFFFF));
        text += digits;
        for (std::size_t i = 0; i < count; ++i) {
            std::snprintf(digits, sizeof digits, "%02X", image[at + i]);
            text += digits;
        }
        text += "00\r\n";
    }
    return text + ":00000001FF\r\n";
}

void HexRead(benchmark::State& state) {
    const std::string text = hex_text(image_of(1 << 20), 32);
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    for (auto _ : state) {
        auto image = qz::firmware::parse_hex_image(bytes);
        benchmark::DoNotOptimize(image.bytes.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(HexRead)->Unit(benchmark::kMillisecond);

// Runs `upgrade` against a fresh simulated terminal and reports its share.
template <class Upgrade>
void run_upgrade(benchmark::State& state, const std::string& file_name, const std::string& contents,
                 Upgrade upgrade) {
    const fs::path file = fs::temp_directory_path() / file_name;
    std::ofstream(file, std::ios::binary) << contents;
    double floor_ms = 0;
    double host_ms = 0;
    for (auto _ : state) {
        qz::sim::InProcessPlatform os;
        os.add_hid_device({.path = "/dev/hidraw0",
                           .terminal = qz::sim::make_terminal(qz::sim::parse_scenario(nlohmann::json::object()))});
        qz::platform::install(&os);
        qz::link::reset_link_state();
        const int icdev = open_device(0, 115200);
        const std::uint32_t before = os.tick_ms();
        const auto started = std::chrono::steady_clock::now();
        const int result = upgrade(icdev, file);
        host_ms += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count();
        floor_ms += os.tick_ms() - before;
        close_device(icdev);
        qz::platform::install(nullptr);
        if (result != 0) state.SkipWithError("the upgrade failed");
    }
    fs::remove(file);
    state.counters["floor_s"] = floor_ms / 1000 / static_cast<double>(state.iterations());
    state.counters["host_ms"] = host_ms / static_cast<double>(state.iterations());
    state.counters["over_floor_percent"] = floor_ms > 0 ? host_ms / floor_ms * 100 : 0;
}

void KeyboardUpgrade(benchmark::State& state) {
    run_upgrade(state, "qz_bench_keyboard.hex", hex_text(image_of(upgrade_size), 16),
                [](int icdev, const fs::path& file) {
                    std::string path = file.string();
                    return upgrade_keyboard(icdev, path.data());
                });
}
BENCHMARK(KeyboardUpgrade)->Unit(benchmark::kMillisecond)->Iterations(3);

void ScannerUpgrade(benchmark::State& state) {
    const Bytes image = image_of(upgrade_size);
    run_upgrade(state, "qz_bench_scanner.bin", std::string(image.begin(), image.end()),
                [](int icdev, const fs::path& file) { return upgrade_scaner(icdev, file.c_str(), nullptr); });
}
BENCHMARK(ScannerUpgrade)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
