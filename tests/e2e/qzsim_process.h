// qzsim, the simulated terminal, as a child process: a serial line on a
// pseudo-terminal and, where asked, a hidraw node through FUSE, in a folder of
// its own. Stopping it unmounts the node and removes the folder.
#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include <nlohmann/json.hpp>

#include "e2e/child_process.h"
#include "support/temp_dir.h"

namespace qz::test {

struct QzsimOptions {
    bool hid = true;  // serve the hidraw node as well as the serial line
    // Entries of the scenario's "faults", on top of the default scenario.
    nlohmann::json faults = nlohmann::json::array();
};

// The hidraw node cannot be served here: no usable /dev/fuse, or no mount.
class FuseUnavailable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Qzsim {
public:
    // Starts qzsim and waits until it serves. Throws FuseUnavailable, or
    // std::runtime_error with what qzsim said.
    explicit Qzsim(const QzsimOptions& options = {});
    ~Qzsim();
    Qzsim(const Qzsim&) = delete;
    Qzsim& operator=(const Qzsim&) = delete;

    // The folder with the link COM1 to the serial line.
    std::filesystem::path ports_dir() const { return folder_.path() / "ports"; }
    // The mount with the node hidraw0; without HID, an empty folder.
    std::filesystem::path hid_dir() const { return folder_.path() / "hid"; }
    std::filesystem::path hid_node() const { return hid_dir() / "hidraw0"; }
    // The pseudo-terminal behind COM1.
    const std::filesystem::path& serial_device() const { return serial_device_; }

private:
    TempDir folder_;
    bool hid_;
    std::unique_ptr<ChildProcess> process_;
    std::filesystem::path serial_device_;
};

}  // namespace qz::test
