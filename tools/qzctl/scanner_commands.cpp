// The magnetic stripe, the barcode scanner, two-dimensional codes and the
// firmware upgrades of the keyboard and the scanner.
#include <unistd.h>

#include <array>
#include <chrono>
#include <iostream>
#include <string>
#include <thread>

#include "commands.h"
#include "progress.h"
#include "qz_32.h"

namespace qzctl {
namespace {

constexpr std::size_t track_room = 255;
constexpr std::size_t code_room = 1024;
constexpr auto swipe_poll = std::chrono::milliseconds(200);

struct Options {
    int swipe_wait = 0;
    int scan_wait = 5;
    bool continuous = false;
    int timeout = 10;
    std::string file;
} options;

void read_stripe(Session& session, Output& out) {
    std::array<unsigned char, 3> lengths{};
    std::array<std::array<unsigned char, track_room>, 3> tracks{};
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(options.swipe_wait);
    int result;
    while ((result = readmagic_data(session.device(), &lengths[0], tracks[0].data(), &lengths[1], tracks[1].data(),
                                    &lengths[2], tracks[2].data())) != 0 &&
           std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(swipe_poll);
    Session::check(result, "reading the magnetic stripe");
    for (std::size_t track = 0; track < tracks.size(); ++track) {
        const std::string number = std::to_string(track + 1);
        out.add("track" + number, "Track " + number, printable(tracks[track].data(), lengths[track]));
    }
}

void read_barcode(Session& session, Output& out) {
    const auto wait = static_cast<unsigned char>(options.scan_wait);
    if (options.continuous) {
        Session::check(get_barcode_continuous(session.device(), wait), "starting continuous reading");
        out.add("continuous", "Continuous reading", "on");
        return;
    }
    unsigned char length = 0;
    std::array<unsigned char, 160> code{};
    Session::check(get_barcode(session.device(), wait, &length, code.data()), "reading a barcode");
    out.add("code", "Code", printable(code.data(), length));
}

void read_two_dimension_code(Session& session, Output& out) {
    std::array<char, code_room + 1> text{};
    Session::check(GetTwoDimensionCode(session.device(), options.timeout, text.data()), "reading a code");
    out.add("code", "Code", printable(reinterpret_cast<const unsigned char*>(text.data()), std::char_traits<char>::length(text.data())));
}

void upgrade_keyboard_firmware(Session& session, Output& out) {
    std::string path = options.file;
    std::cerr << "Upgrading the keyboard: the loader takes about 11 s plus 50 ms for every 170 bytes\n";
    Session::check(upgrade_keyboard(session.device(), path.data()), "upgrading the keyboard");
    unsigned length = 0;
    std::array<unsigned char, 100> version{};
    Session::check(get_cktkb_verion(session.device(), &length, version.data()), "reading the keyboard's version");
    out.add("version", "Keyboard version", printable(version.data(), length));
}

void upgrade_scanner_firmware(Session& session, Output& out) {
    Session::check(upgrade_scaner(session.device(), options.file.c_str(), show_progress), "upgrading the scanner");
    unsigned length = 0;
    std::array<unsigned char, 256> version{};
    Session::check(GetScanerVer(session.device(), &length, version.data()), "reading the scanner's version");
    out.add("version", "Scanner version", printable(version.data(), length));
}

void on_run(CLI::App* command, Action& action, void (*run)(Session&, Output&)) {
    command->callback([&action, run] { action = run; });
}

}  // namespace

void add_scanner_commands(CLI::App& app, Action& action) {
    auto* mag = app.add_subcommand("mag", "Read the three tracks of a swiped magnetic stripe");
    mag->add_option("-w,--wait", options.swipe_wait, "Seconds to wait for a swipe")->check(CLI::Range(0, 600));
    on_run(mag, action, read_stripe);

    auto* barcode = app.add_subcommand("barcode", "Read a barcode");
    barcode->add_option("-w,--wait", options.scan_wait, "Seconds the scanner waits (2-10)")->check(CLI::Range(2, 10));
    barcode->add_flag("-c,--continuous", options.continuous, "Switch the scanner to continuous reading");
    on_run(barcode, action, read_barcode);

    auto* qrcode = app.add_subcommand("qrcode", "Read a two-dimensional code");
    qrcode->add_option("-t,--timeout", options.timeout, "Seconds to wait for a code")->check(CLI::Range(1, 255));
    on_run(qrcode, action, read_two_dimension_code);

    auto* upgrade = app.add_subcommand("upgrade", "Load new firmware into the keyboard or the scanner");
    upgrade->require_subcommand(1);
    auto* keyboard = upgrade->add_subcommand("keyboard", "From an Intel HEX file");
    keyboard->add_option("file", options.file, "FILE.hex")->required()->check(CLI::ExistingFile);
    on_run(keyboard, action, upgrade_keyboard_firmware);
    auto* scanner = upgrade->add_subcommand("scanner", "From the scanner's raw firmware file");
    scanner->add_option("file", options.file, "Firmware file")->required()->check(CLI::ExistingFile);
    on_run(scanner, action, upgrade_scanner_firmware);
}

}  // namespace qzctl
