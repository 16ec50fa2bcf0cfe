// qzsim: the simulated terminal on a pseudo-terminal (as a serial port) and/or
// a FUSE hidraw node, until SIGINT or SIGTERM.
#include <signal.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>

#include "sim/endpoints/hid_endpoint.h"
#include "sim/endpoints/hidraw_fuse.h"
#include "sim/endpoints/pty_server.h"
#include "sim/core/scenario.h"
#include "sim/core/scenario_folder.h"
#include "sim/endpoints/serial_endpoint.h"
#include "sim/core/simulator.h"
#include "sim/models/lcd/lcd_model.h"
#include "sim/models/screen/png_file.h"
#include "sim/models/screen/screen_model.h"

namespace {

struct Options {
    std::filesystem::path scenario = qz::sim::scenario_folder() / "default.json";
    std::optional<std::filesystem::path> ports_dir;
    std::string port_name = "COM1";
    std::optional<std::filesystem::path> mount_dir;
    std::optional<std::filesystem::path> screen_png;
};

// The colour screen to `png` after every change, and the line LCD beside it as
// "<name>-lcd.png" and "<name>-lcd.txt".
void write_displays(qz::sim::Terminal& terminal, const std::filesystem::path& png) {
    auto& screen = *terminal.model<qz::sim::ScreenModel>();
    auto& lcd = *terminal.model<qz::sim::LcdModel>();
    const auto lcd_base = png.parent_path() / (png.stem().string() + "-lcd");
    screen.on_change([png](const qz::sim::FrameBuffer& shown) {
        if (!shown.save_png(png)) std::cerr << "qzsim: cannot write " << png << '\n';
    });
    lcd.on_change([lcd_base](const qz::sim::LcdModel& shown) {
        qz::sim::write_rgb_png(std::filesystem::path(lcd_base).concat(".png"), qz::sim::lcd_width, qz::sim::lcd_height,
                               shown.rgb());
        std::ofstream(std::filesystem::path(lcd_base).concat(".txt"), std::ios::trunc) << shown.as_text();
    });
    screen.visible().save_png(png);
}

// Signals are taken by sigwait in the main thread only; every server thread
// starts with them blocked.
sigset_t stop_signals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

int serve(const Options& options) {
    const auto scenario = qz::sim::load_scenario(options.scenario);
    const auto terminal = qz::sim::make_terminal(scenario);
    if (options.screen_png) write_displays(*terminal, *options.screen_png);
    std::mutex lock;
    qz::sim::SerialEndpoint serial_endpoint(*terminal);
    qz::sim::HidEndpoint hid_endpoint(*terminal, scenario.hid.report_length);

    const sigset_t signals = stop_signals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    std::unique_ptr<qz::sim::PtyServer> pty;
    std::unique_ptr<qz::sim::HidrawFuse> hidraw;
    if (options.ports_dir) {
        pty = std::make_unique<qz::sim::PtyServer>(serial_endpoint, lock, *options.ports_dir / options.port_name);
        std::cout << "serial: " << pty->link().string() << " -> " << pty->slave_path() << '\n';
    }
    if (options.mount_dir) {
        hidraw = std::make_unique<qz::sim::HidrawFuse>(hid_endpoint, lock, *options.mount_dir);
        std::cout << "hid: " << hidraw->node().string() << " (feature report 6, " << scenario.hid.report_length
                  << " bytes)\n";
    }
    std::cout.flush();

    int signal = 0;
    sigwait(&signals, &signal);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app{"Simulated terminal on a pseudo-terminal and a FUSE hidraw node"};
    app.add_option("-s,--scenario", options.scenario, "Scenario file (JSON)")->check(CLI::ExistingFile);
    auto* serial = app.add_option("--serial", options.ports_dir, "Directory for the link to the pseudo-terminal");
    app.add_option("-n,--name", options.port_name, "Port name of the link, e.g. COM1")
        ->needs(serial)
        ->check([](const std::string& name) { return name.find('/') == std::string::npos ? "" : "no '/' in a name"; });
    app.add_option("--hid", options.mount_dir, "Directory to mount the hidraw node on");
    app.add_option("--screen", options.screen_png,
                   "PNG file of the colour screen, written after every change (the LCD goes beside it)");
    CLI11_PARSE(app, argc, argv);
    if (!options.ports_dir && !options.mount_dir) {
        std::cerr << "qzsim: give --serial PORTS_DIR, --hid MOUNT_DIR or both\n";
        return 2;
    }
    try {
        return serve(options);
    } catch (const std::exception& error) {
        std::cerr << "qzsim: " << error.what() << '\n';
        return 1;
    }
}
