// qzsim: the simulated terminal on a pseudo-terminal (as a serial port), a FUSE
// hidraw node and/or a web panel, until SIGINT or SIGTERM.
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
#include "sim/endpoints/web/web_panel.h"
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
    std::optional<std::string> web;  // [ADDR:]PORT
    bool web_listen_any = false;
};

constexpr const char* default_web_address = "127.0.0.1";
constexpr int default_web_port = 8032;

struct WebAddress {
    std::string address;
    int port;
};

// "[ADDR:]PORT", "" for the default; nothing for a malformed one.
std::optional<WebAddress> web_address(const std::string& text) {
    if (text.empty()) return WebAddress{default_web_address, default_web_port};
    const auto colon = text.rfind(':');
    const std::string port_text = colon == std::string::npos ? text : text.substr(colon + 1);
    std::string address = colon == std::string::npos ? default_web_address : text.substr(0, colon);
    if (address.size() > 2 && address.front() == '[' && address.back() == ']') address = address.substr(1, address.size() - 2);
    if (port_text.empty() || port_text.size() > 5 || port_text.find_first_not_of("0123456789") != std::string::npos)
        return std::nullopt;
    const int port = std::stoi(port_text);
    if (port > 65535 || address.empty()) return std::nullopt;
    return WebAddress{address, port};
}

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

    // Declared first so it stops last: the other servers call into its listeners.
    std::unique_ptr<qz::sim::WebPanel> web;
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
    if (options.web) {
        const auto where = web_address(*options.web);
        if (!where) throw std::runtime_error("--web takes [ADDR:]PORT, not \"" + *options.web + "\"");
        if (!qz::sim::is_loopback(where->address) && !options.web_listen_any)
            throw std::runtime_error("the web panel listens on loopback only unless --web-listen-any is given");
        if (!qz::sim::is_loopback(where->address))
            std::cerr << "qzsim: warning: the web panel on " << where->address
                      << " lets anyone who reaches it drive the simulated terminal\n";
        {
            std::lock_guard guard(lock);
            terminal->person().typing = true;  // the page's user keys the PINs
        }
        web = std::make_unique<qz::sim::WebPanel>(*terminal, lock, scenario.document,
                                                  qz::sim::scenario_folder() / "cards", where->address, where->port);
        std::cout << "web: http://" << (where->address.find(':') != std::string::npos ? "[" + where->address + "]" : where->address)
                  << ':' << web->port() << "/\n";
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
    app.add_option("--web", options.web, "Serve the web panel on [ADDR:]PORT (default 127.0.0.1:8032; port 0: any)")
        ->expected(0, 1);
    app.add_flag("--web-listen-any", options.web_listen_any, "Let the web panel listen on an address other than loopback");
    CLI11_PARSE(app, argc, argv);
    if (!options.ports_dir && !options.mount_dir && !options.web) {
        std::cerr << "qzsim: give --serial PORTS_DIR, --hid MOUNT_DIR, --web [ADDR:]PORT or several\n";
        return 2;
    }
    try {
        return serve(options);
    } catch (const std::exception& error) {
        std::cerr << "qzsim: " << error.what() << '\n';
        return 1;
    }
}
