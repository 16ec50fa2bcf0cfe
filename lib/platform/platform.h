// The operating system under the library: HID feature reports, serial ports and
// time. The link layer sees the terminal only through this interface, so tests can
// put an in-process terminal behind it and other systems can provide their own.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace qz::platform {

struct LocalTime {
    int year = 0;
    int month = 0;  // 1..12
    int day = 0;    // 1..31
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

struct HidIdentity {
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
};

struct SerialSettings {
    std::uint32_t baud = 9600;
    std::uint8_t byte_size = 8;
    std::uint8_t stop_bits = 0;  // 0 one, 1 one and a half, 2 two
    std::uint8_t parity = 0;     // 0 none, 1 odd, 2 even
    // How long one read of a byte waits when nothing arrives.
    std::uint32_t read_timeout_ms = 0;
};

// Results of opening a serial port, as the link layer reports them.
enum class SerialOpenError : int {
    in_use = -20,
    unavailable = -21,
    state_unreadable = -22,
    state_refused = -23,
};

enum class ByteRead { received, timed_out, failed };

// Handles are positive integers that the platform itself handed out; every
// operation on a handle it does not know fails without touching anything.
class Platform {
public:
    virtual ~Platform() = default;

    // Time.
    virtual std::uint32_t tick_ms() = 0;
    virtual void sleep_ms(std::uint32_t ms) = 0;
    virtual LocalTime local_time() = 0;
    // A finer clock, and a sleep to a point of it: a pause measured from an
    // earlier moment does not add the sleep's own overshoot. By default built
    // on the two millisecond calls above.
    virtual std::uint64_t tick_us() { return std::uint64_t{tick_ms()} * 1000; }
    virtual void sleep_until_us(std::uint64_t deadline_us);

    // HID. `hid_path` names the interface at `index` (0 to 63), or nothing past
    // the last one. `hid_open` gives an exclusively held handle, or -1.
    virtual std::optional<std::string> hid_path(int index) = 0;
    virtual int hid_open(const std::string& path) = 0;
    virtual std::optional<HidIdentity> hid_identity(int handle) = 0;
    // Length of the longest feature report, report id byte included.
    virtual std::optional<std::uint16_t> hid_feature_report_length(int handle) = 0;
    // Byte 0 of `report` is the report id, on the way out and on the way back.
    virtual bool hid_set_feature(int handle, std::span<const std::uint8_t> report) = 0;
    virtual bool hid_get_feature(int handle, std::span<std::uint8_t> report) = 0;

    // Serial ports, by the names "COM1" .. "\\.\COM32".
    virtual int serial_open(const std::string& name, const SerialSettings& settings) = 0;  // handle or SerialOpenError
    virtual void serial_purge(int handle) = 0;
    virtual bool serial_write(int handle, std::uint8_t byte) = 0;
    virtual ByteRead serial_read(int handle, std::uint8_t& byte) = 0;

    virtual bool close(int handle) = 0;
};

// The platform in use: the system's own unless a test installed another.
Platform& current();

// The system's own platform, defined by the folder of the system the library is
// built for (linux/, ...).
Platform& system_platform();

// Installs `platform` for all that follows (nullptr restores the system's own).
// The caller keeps ownership and keeps it alive while it is installed.
void install(Platform* platform);

}  // namespace qz::platform
