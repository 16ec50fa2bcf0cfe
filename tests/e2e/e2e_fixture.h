// What the end-to-end tests share: a qzsim of the test's own, the library's
// real Linux backends pointed at it, and the terminal opened as a host does.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "e2e/qzsim_process.h"
#include "support/simulated_terminal.h"
#include "support/temp_dir.h"

namespace qz::test {

std::string link_name(Link link);
void PrintTo(Link link, std::ostream* out);

// A terminal opened by open_device and closed with the object.
class Device {
public:
    explicit Device(unsigned char port = 0, int baud = 115200);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    int handle() const { return handle_; }
    // Closes it now; the result of close_device.
    int close();

private:
    int handle_;
};

// The file a descriptor of this process refers to ("" if none).
std::filesystem::path descriptor_target(int fd);

// Whether some descriptor of this process refers to `file`.
bool held_open(const std::filesystem::path& file);

// Tells whether anyone opened a file after the watch began.
class OpenWatch {
public:
    explicit OpenWatch(const std::filesystem::path& file);
    ~OpenWatch();
    OpenWatch(const OpenWatch&) = delete;
    OpenWatch& operator=(const OpenWatch&) = delete;

    bool opened() const;

private:
    int inotify_ = -1;
};

class SimulatorTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Starts qzsim and points the library at it: for Link::hid at the hidraw
    // node and the serial line, for Link::serial at the serial line only (the
    // HID folder is empty). Returns false with the test skipped where FUSE
    // cannot serve the node, or failed (fatally) where qzsim does not start.
    [[nodiscard]] bool start(Link link, const nlohmann::json& faults = nlohmann::json::array());

    std::unique_ptr<Qzsim> sim;

private:
    TempDir no_log_;
    ScopedEnv log_env_{"QZ_32_LOG_ROOT", (no_log_.path() / "off").string()};
    std::optional<ScopedEnv> hid_env_;
    std::optional<ScopedEnv> ports_env_;
};

// A fault rule of the scenario that hits the next `instruction` of class 0x00 once.
nlohmann::json fault_once(std::uint8_t instruction, nlohmann::json fault);

}  // namespace qz::test
