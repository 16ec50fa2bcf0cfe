#include "e2e/qzsim_process.h"

#include <sys/mount.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

namespace qz::test {
namespace fs = std::filesystem;
namespace {

constexpr auto start_timeout = std::chrono::seconds(10);

// The terminal of the shipped scenario (its control and HID sections) with the
// given faults. Sections of other devices are left to their defaults.
fs::path write_scenario(const fs::path& folder, const nlohmann::json& faults) {
    std::ifstream shipped(fs::path(QZ_32_SIM_SCENARIO_DIR) / "default.json");
    const auto defaults = nlohmann::json::parse(shipped);
    nlohmann::json scenario = nlohmann::json::object();
    for (const char* section : {"control", "hid"})
        if (defaults.contains(section)) scenario[section] = defaults[section];
    scenario["faults"] = faults;
    const fs::path file = folder / "scenario.json";
    std::ofstream(file) << scenario.dump(2);
    return file;
}

std::string contents_of(const fs::path& file) {
    std::ifstream in(file);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

Qzsim::Qzsim(const QzsimOptions& options) : hid_(options.hid) {
    if (hid_ && ::access("/dev/fuse", R_OK | W_OK) != 0) throw FuseUnavailable("/dev/fuse is missing or not usable");
    fs::create_directory(hid_dir());
    std::vector<std::string> arguments{QZ_32_QZSIM, "--scenario", write_scenario(folder_.path(), options.faults),
                                       "--serial", ports_dir()};
    if (hid_) arguments.insert(arguments.end(), {"--hid", hid_dir()});
    const fs::path errors = folder_.path() / "qzsim.err";
    process_ = std::make_unique<ChildProcess>(arguments, errors);

    // qzsim names each service once it serves: "serial: LINK -> DEVICE" and "hid: NODE (...)".
    bool hid_served = !hid_;
    while (serial_device_.empty() || !hid_served) {
        const auto line = process_->read_line(start_timeout);
        if (!line) break;
        if (line->starts_with("serial: ")) serial_device_ = line->substr(line->rfind(" -> ") + 4);
        if (line->starts_with("hid: ")) hid_served = true;
    }
    if (serial_device_.empty() || !hid_served) {
        const int exit_code = process_->stop();
        if (hid_) ::umount2(hid_dir().c_str(), MNT_DETACH);
        const std::string said = contents_of(errors);
        if (hid_ && said.find("FUSE") != std::string::npos) throw FuseUnavailable(said);
        throw std::runtime_error("qzsim did not start (exit " + std::to_string(exit_code) + "): " + said);
    }
}

Qzsim::~Qzsim() {
    process_->stop();
    // qzsim unmounts on SIGTERM; should it have been killed instead, the mount goes here.
    if (hid_) ::umount2(hid_dir().c_str(), MNT_DETACH);
}

}  // namespace qz::test
