// A terminal scripted by each test, behind the platform layer: it records what the
// library writes and answers with what the test says, on a virtual clock.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace qz::test {

using Bytes = std::vector<std::uint8_t>;

// Frame of `payload`, built here independently of the library.
Bytes make_frame(const Bytes& payload);
// Reply frame with the given status word, the reserved byte 0 and `data`.
Bytes make_reply(std::uint16_t status, const Bytes& data = {});

class ScriptedPlatform final : public platform::Platform {
public:
    struct HidDevice {
        std::string path;
        platform::HidIdentity identity{0x23A4, 0x0305};
        std::optional<std::uint16_t> report_length = 256;  // nothing: capabilities unreadable
        bool held_elsewhere = false;
    };
    struct SerialPort {
        int open_result = 0;  // 0 opens; else the SerialOpenError value
    };

    // What the terminal answers to a whole request frame: the raw reply stream,
    // cut into reports of 254 bytes on HID. Empty means silence.
    std::function<Bytes(const Bytes& request)> respond = [](const Bytes&) { return make_reply(0); };

    std::vector<HidDevice> hid_devices;
    std::map<std::string, SerialPort> serial_ports;

    // Raw feature reports served before anything `respond` produced; nothing
    // is a failing request.
    std::deque<std::optional<Bytes>> hid_reports;

    // Recorded traffic.
    std::vector<Bytes> written_reports;
    std::vector<Bytes> requests;  // whole request frames, either link
    Bytes serial_written;
    int purges = 0;
    int get_feature_calls = 0;
    std::vector<std::string> opened_paths;
    std::vector<platform::SerialSettings> serial_opens;
    std::vector<std::string> serial_open_names;
    std::set<int> closed;

    std::uint32_t now_ms = 0;
    platform::LocalTime local{2026, 11, 23, 10, 0, 0, 0};

    std::uint32_t tick_ms() override { return now_ms; }
    void sleep_ms(std::uint32_t ms) override { now_ms += ms; }
    platform::LocalTime local_time() override { return local; }

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

    // Number of handles open at the moment.
    int open_handles() const { return static_cast<int>(handles_.size()); }

    // Adds the terminal's HID node and opens it the way open_device leaves the
    // link: HID, report length 256, time-outs 5000 and 0. Gives the handle.
    int open_hid_link();

private:
    void take_request_bytes(std::span<const std::uint8_t> bytes);
    void queue_reply(const Bytes& stream);

    struct Handle {
        bool hid = true;
        std::string name;
        std::uint32_t read_timeout_ms = 0;
    };
    std::map<int, Handle> handles_;
    int next_handle_ = 3;
    Bytes pending_request_;
    std::deque<Bytes> reply_reports_;
    std::deque<std::uint8_t> serial_input_;
};

// Installs a ScriptedPlatform for the life of the object and puts the link state
// back to its values at load.
class ScriptedTerminal {
public:
    ScriptedTerminal();
    ~ScriptedTerminal();
    ScriptedTerminal(const ScriptedTerminal&) = delete;
    ScriptedTerminal& operator=(const ScriptedTerminal&) = delete;

    ScriptedPlatform platform;
};

}  // namespace qz::test
