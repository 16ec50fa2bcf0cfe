// The simulated terminal behind the library in the same process: HID devices
// and serial ports that tests set up, each with the simulated terminal or a
// test's script of one behind it, handle bookkeeping, a virtual clock and a
// record of the calls and the traffic. Not thread-safe: one test thread drives it.
//
// The clock moves only by sleep_ms, by 1 ms for each HID read that finds no
// reply, and by a serial port's read time-out (at least 1 ms) for each serial
// read that finds nothing, so time-outs run at once and always alike.
//
// A serial purge drops the reply bytes not yet read and also a request the
// terminal has only half received (as the terminal's own time-out between
// bytes would long before the next request).
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/platform.h"
#include "sim/endpoints/hid_endpoint.h"
#include "sim/endpoints/serial_endpoint.h"
#include "sim/core/responder.h"

namespace qz::sim {

class InProcessPlatform final : public platform::Platform {
public:
    struct HidDevice {
        std::string path{};
        std::uint16_t vendor = usb_vendor;
        std::uint16_t product = usb_product;
        std::uint16_t report_length = default_report_length;
        bool held_elsewhere = false;  // another process has it open: opening fails
        bool report_length_readable = true;
        // Nothing: a device that takes reports and never answers.
        std::shared_ptr<Responder> terminal{};
    };

    struct SerialPort {
        std::string name{};  // "COM1", "\\.\COM10", ...
        std::optional<platform::SerialOpenError> refusal{};  // what opening gives instead of a handle
        // Nothing: the port opens, and nothing ever answers.
        std::shared_ptr<Responder> terminal{};
    };

    explicit InProcessPlatform(std::uint32_t start_tick_ms = 0) : now_(start_tick_ms) {}

    // Devices are listed in the order added.
    void add_hid_device(HidDevice device);
    void add_serial_port(SerialPort port);
    void set_local_time(const platform::LocalTime& time) { local_time_ = time; }
    // A faulty device: `report` is handed out, as it stands, before anything
    // of the device's own.
    void queue_stray_report(std::string_view path, std::vector<std::uint8_t> report);

    // Traffic: every report written to a HID device, whole; every byte written
    // to a serial port, and how often the port was purged.
    const std::vector<std::vector<std::uint8_t>>& reports_written(std::string_view path) const;
    const std::vector<std::uint8_t>& bytes_written(std::string_view port) const;
    int purges(std::string_view port) const;
    std::size_t open_handles() const { return handles_.size(); }
    // Calls: every HID path and every serial port name asked for, in order; the
    // settings of each serial port opened; the feature reports read or tried.
    const std::vector<std::string>& hid_paths_asked() const { return hid_paths_asked_; }
    const std::vector<std::string>& serial_ports_asked() const { return serial_ports_asked_; }
    const std::vector<platform::SerialSettings>& serial_settings() const { return serial_settings_; }
    int hid_reads() const { return hid_reads_; }

    std::uint32_t tick_ms() override { return now_; }
    void sleep_ms(std::uint32_t ms) override { now_ += ms; }
    platform::LocalTime local_time() override { return local_time_; }

    std::optional<std::string> hid_path(int index) override;
    int hid_open(const std::string& path) override;
    std::optional<platform::HidIdentity> hid_identity(int handle) override;
    std::optional<std::uint16_t> hid_feature_report_length(int handle) override;
    bool hid_set_feature(int handle, std::span<const std::uint8_t> report) override;
    bool hid_get_feature(int handle, std::span<std::uint8_t> report) override;

    int serial_open(const std::string& name, const platform::SerialSettings& settings) override;
    void serial_purge(int handle) override;
    bool serial_write(int handle, std::uint8_t byte) override;
    platform::ByteRead serial_read(int handle, std::uint8_t& byte) override;

    bool close(int handle) override;

private:
    struct HidSlot {
        HidDevice device;
        std::optional<HidEndpoint> endpoint;  // with a terminal behind it
        std::vector<std::vector<std::uint8_t>> written;
        std::deque<std::vector<std::uint8_t>> stray_reports;
        bool open = false;
    };
    struct SerialSlot {
        SerialPort port;
        std::optional<SerialEndpoint> endpoint;
        std::vector<std::uint8_t> written;
        int purges = 0;
        bool open = false;
        std::uint32_t read_timeout_ms = 0;
    };
    HidSlot* hid(int handle);
    SerialSlot* serial(int handle);
    const SerialSlot& serial_named(std::string_view name) const;

    std::uint32_t now_;
    platform::LocalTime local_time_;
    // Slots live on the heap, so handles can point at them.
    std::vector<std::unique_ptr<HidSlot>> hid_slots_;
    std::vector<std::unique_ptr<SerialSlot>> serial_slots_;
    std::map<int, std::variant<HidSlot*, SerialSlot*>> handles_;
    std::vector<std::string> hid_paths_asked_;
    std::vector<std::string> serial_ports_asked_;
    std::vector<platform::SerialSettings> serial_settings_;
    int hid_reads_ = 0;
    int next_handle_ = 3;  // the library counts only handles above 1 as open
};

}  // namespace qz::sim
