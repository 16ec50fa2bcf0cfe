// The colour screen's host work and its transfer:
// - picture_pipeline: decode, stretch and pack an 800 x 480 JPEG or PNG (goal < 10 ms);
// - text_full_screen: 30 rows of 16-pixel text, 1,200 different characters
//   and a few Latin letters, rendered through the font component and cut into
//   lines (goal < 5 ms); the first run draws every glyph, later runs find
//   them in the component's glyph cache;
// - hid_full_screen_picture: ShowPicInScreen of an 800 x 480 picture to the
//   simulated terminal's FUSE hidraw node, set against the floor of the link's
//   pacing (each report written 5 ms plus the write gap, each report read one
//   feature request): counters floor_ms and ratio (goal <= 1.01).
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>

#include "link/link_state.h"
#include "platform/image.h"
#include "qz_32.h"
#include "screen/picture.h"
#include "screen/text_layout.h"
#include "served_terminal.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

enum class Format { jpeg, png };

// An 800 x 480 picture with smooth colours, written once for the program.
std::string picture_file(Format format) {
    const fs::path path = fs::temp_directory_path() / (format == Format::jpeg ? "qz32-bench.jpg" : "qz32-bench.png");
    if (fs::exists(path)) return path.string();
    std::vector<std::uint8_t> rgb;
    for (int y = 0; y < 480; ++y)
        for (int x = 0; x < 800; ++x)
            rgb.insert(rgb.end(), {static_cast<std::uint8_t>(128 + 127 * std::sin(x / 40.0)),
                                   static_cast<std::uint8_t>(128 + 127 * std::sin(y / 30.0)),
                                   static_cast<std::uint8_t>(x * 255 / 800)});
    if (format == Format::jpeg)
        stbi_write_jpg(path.c_str(), 800, 480, 3, rgb.data(), 90);
    else
        stbi_write_png(path.c_str(), 800, 480, 3, rgb.data(), 800 * 3);
    return path.string();
}

void picture_pipeline(benchmark::State& state, Format format) {
    const std::string path = picture_file(format);
    for (auto _ : state) {
        auto image = qz::platform::decode_image_file(path);
        if (!image) {
            state.SkipWithError("the picture does not decode");
            break;
        }
        const auto fitted = qz::platform::stretch_image(std::move(*image), 800, 480);
        const auto words = qz::screen::pack_colour_words(*fitted);
        benchmark::DoNotOptimize(words.data());
    }
}

// Rows of GB2312 characters in code order, none twice, then Latin letters.
std::string full_screen_text() {
    std::string text;
    for (int row = 0, code = 0; row < 30; ++row) {
        for (int glyph = 0; glyph < 40; ++glyph, ++code) {
            text += static_cast<char>(0xB0 + code / 94);
            text += static_cast<char>(0xA1 + code % 94);
        }
        text += "abcdefghijklmnopqrst\\r\\n";
    }
    return text;
}

void text_full_screen(benchmark::State& state) {
    const std::string text = full_screen_text();
    std::vector<std::uint8_t> packed;
    const auto pack = [&](const qz::screen::TextLine& line) {
        packed.assign(line.bitmap.begin(), line.bitmap.end());
        return 0;
    };
    // The component loaded and its font opened (once a process) outside the timing.
    qz::screen::lay_out_text({"~", 16, 0, 0, true}, pack);
    for (auto _ : state) {
        if (qz::screen::lay_out_text({text, 16, 0, 0, true}, pack) != 0) {
            state.SkipWithError("the font component is missing");
            break;
        }
        benchmark::DoNotOptimize(packed.data());
    }
}

void hid_full_screen_picture(benchmark::State& state) {
    using namespace qz::bench;
    const int handle = open_served(state, Link::hid);
    if (handle == 0) return;
    const std::string path = picture_file(Format::png);
    const auto start = Clock::now();
    for (auto _ : state)
        if (ShowPicInScreen(handle, path.c_str(), 0, 0, 0, 0) != 0) {
            state.SkipWithError("the picture was refused");
            break;
        }
    const double measured_ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count() /
                               static_cast<double>(std::max<benchmark::IterationCount>(state.iterations(), 1));
    close_device(handle);

    // One first command of 17 bytes, then 187 blocks of 4096 bytes and one of 2048; each reply is 3 bytes.
    const double gap_ms = qz::link::link_state().write_gap_ms;
    std::size_t reports_out = reports_for(17 + frame_overhead) + reports_for(2048 + 3 + frame_overhead);
    reports_out += 187 * reports_for(4096 + 3 + frame_overhead);
    const std::size_t reports_in = 189 * reports_for(3 + frame_overhead);
    const double floor_ms = static_cast<double>(reports_out) * (hid_settle_ms + gap_ms) +
                            static_cast<double>(reports_in) * served().feature_read_ms();
    state.counters["reports_out"] = static_cast<double>(reports_out);
    state.counters["floor_ms"] = floor_ms;
    state.counters["ratio"] = measured_ms / floor_ms;
}

BENCHMARK_CAPTURE(picture_pipeline, jpeg_800x480, Format::jpeg)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(picture_pipeline, png_800x480, Format::png)->Unit(benchmark::kMillisecond);
BENCHMARK(text_full_screen)->Name("text_full_screen_first")->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(text_full_screen)->Unit(benchmark::kMillisecond);
BENCHMARK(hid_full_screen_picture)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace
