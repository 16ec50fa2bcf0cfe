// Commands on the terminal itself: info, beep, eeprom, log.
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "commands.h"
#include "qz_32.h"

namespace qzctl {
namespace {

void info(Session& session, Output& out) {
    const int device = session.device();
    unsigned char length = 0;
    unsigned char version[256] = {};
    Session::check(get_version(device, &length, version), "reading the version");
    out.add("version", "Version", printable(version, length));

    unsigned char serial[20] = {};
    const int serial_result = dev_readsnr(device, sizeof serial, serial);
    out.add("serial_number", "Serial number",
            serial_result == 0 ? to_hex(serial, sizeof serial) : "unavailable");

    unsigned char registration[256] = {};
    unsigned char registration_length = 0;
    const int registration_result = dev_readregno(device, &registration_length, registration);
    out.add("registration_number", "Registration number",
            registration_result == 0 ? printable(registration, registration_length) : "unavailable");
}

std::vector<unsigned char> parse_hex(const std::string& text) {
    std::vector<unsigned char> bytes(text.size() / 2 + 1);
    if (text.size() % 2 != 0 || asc_hex(text.c_str(), bytes.data(), static_cast<unsigned>(text.size() / 2)) != 0)
        throw Failure(exit_usage, "not an even count of hexadecimal digits: " + text);
    bytes.resize(text.size() / 2);
    return bytes;
}

void add_eeprom(CLI::App& app, Action& action) {
    auto* eeprom = app.add_subcommand("eeprom", "Read or write the terminal's EEPROM (offsets 0-200, 1-200 bytes)");
    eeprom->require_subcommand(1);

    static unsigned offset = 0;
    static unsigned length = 16;
    static std::string data;
    auto* read = eeprom->add_subcommand("read", "Read LENGTH bytes at OFFSET");
    read->add_option("offset", offset, "Byte offset")->required()->check(CLI::Range(0, 200));
    read->add_option("length", length, "Byte count")->check(CLI::Range(1, 200));
    read->callback([&action] {
        action = [](Session& session, Output& out) {
            std::vector<unsigned char> bytes(length);
            Session::check(dev_readeeprom(session.device(), static_cast<unsigned short>(offset),
                                          static_cast<unsigned short>(length), bytes.data()),
                           "reading the EEPROM");
            out.add("offset", "Offset", offset);
            out.add("data", "Data", to_hex(bytes.data(), bytes.size()));
        };
    });

    auto* write = eeprom->add_subcommand("write", "Write hexadecimal DATA at OFFSET");
    write->add_option("offset", offset, "Byte offset")->required()->check(CLI::Range(0, 200));
    write->add_option("-d,--data", data, "Bytes in hexadecimal")->required();
    write->callback([&action] {
        action = [](Session& session, Output& out) {
            const auto bytes = parse_hex(data);
            if (bytes.empty() || bytes.size() > 200) throw Failure(exit_usage, "write 1 to 200 bytes");
            Session::check(dev_writeeeprom(session.device(), static_cast<unsigned short>(offset),
                                           static_cast<unsigned short>(bytes.size()), bytes.data()),
                           "writing the EEPROM");
            out.add("written", "Bytes written", bytes.size());
        };
    });
}

void log_status(Session&, Output& out) {
    const char* root = std::getenv("QZ_32_LOG_ROOT");
    const std::filesystem::path folder = (root != nullptr && *root != '\0') ? root : "/var/log/QZlog";
    std::error_code error;
    const bool on = std::filesystem::is_directory(folder, error);
    out.add("folder", "Log folder", folder.string());
    out.add("enabled", "Logging", on ? "on" : "off (create the folder to switch it on)");
}

}  // namespace

void add_device_commands(CLI::App& app, Action& action) {
    app.add_subcommand("info", "Show the terminal's version, serial number and registration number")
        ->callback([&action] { action = info; });
    app.add_subcommand("beep", "Sound the buzzer")->callback([&action] {
        action = [](Session& session, Output& out) {
            Session::check(dev_beep(session.device(), 1, 1, 1), "sounding the buzzer");
            out.add("beep", "Beep", "done");
        };
    });
    add_eeprom(app, action);
    app.add_subcommand("log", "Show where the diagnostic log goes and whether it is on")
        ->callback([&action] { action = log_status; });
}

}  // namespace qzctl
