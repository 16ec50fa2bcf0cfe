// The platform on Windows: HID class devices through SetupDi and hid.dll, COM
// ports through the communications functions, the system's tick count.
#pragma once

#include <windows.h>

#include "platform/handle_registry.h"
#include "platform/platform.h"

namespace qz::platform {

class WindowsPlatform final : public Platform {
public:
    std::uint32_t tick_ms() override;
    void sleep_ms(std::uint32_t ms) override;
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
    // Records a handle of the system under the number that the library hands
    // out for it (the system keeps handle values within 32 bits on every
    // architecture), or closes it and gives -1 if no such number fits.
    int adopt(HANDLE system_handle, HandleInfo info);

    HandleRegistry handles_;
};

// The system's handle behind a number that adopt() gave.
inline HANDLE system_handle(int handle) { return LongToHandle(handle); }

}  // namespace qz::platform
