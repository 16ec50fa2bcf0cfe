// The platform on Linux: hidraw nodes, termios serial ports, POSIX clocks.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>

#include "platform/handle_registry.h"
#include "platform/platform.h"

namespace qz::platform {

class LinuxPlatform final : public Platform {
public:
    std::uint32_t tick_ms() override;
    void sleep_ms(std::uint32_t ms) override;
    std::uint64_t tick_us() override;
    void sleep_until_us(std::uint64_t deadline_us) override;
    LocalTime local_time() override;

    std::optional<std::string> hid_path(int index) override;
    int hid_open(const std::string& path) override;
    std::optional<HidIdentity> hid_identity(int handle) override;
    std::optional<std::uint16_t> hid_feature_report_length(int handle) override;
    bool hid_set_feature(int handle, std::span<const std::uint8_t> report) override;
    bool hid_get_feature(int handle, std::span<std::uint8_t> report) override;

    int serial_open(const std::string& name, const SerialSettings& settings) override;
    void serial_purge(int handle) override;
    bool serial_write(int handle, std::uint8_t byte) override;
    ByteRead serial_read(int handle, std::uint8_t& byte) override;

    bool close(int handle) override;

private:
    // Bytes read from a serial port ahead of the caller, so that a frame costs one
    // system call per burst rather than per byte.
    struct SerialInput {
        std::uint8_t bytes[4096];
        std::size_t next = 0;
        std::size_t end = 0;
    };
    SerialInput& serial_input(int handle);

    HandleRegistry handles_;
    std::mutex input_mutex_;
    std::unordered_map<int, std::unique_ptr<SerialInput>> inputs_;
};

// Device path behind a port name: the link COMn in the ports folder if there is
// one, else /dev/ttyS<n-1>. Empty for a name that is no port name.
std::string serial_device_path(const std::string& name);

// ioctl that is repeated while a signal interrupts it.
int ioctl_retrying(int fd, unsigned long request, void* argument);

}  // namespace qz::platform
