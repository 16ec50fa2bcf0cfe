// A terminal scripted by each test, behind the simulator's in-process platform:
// every whole request frame is recorded and answered with the raw bytes the test
// gives, on the platform's virtual clock.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "sim/endpoints/inprocess_platform.h"

namespace qz::test {

using Bytes = std::vector<std::uint8_t>;

// Frame of `payload`, built here independently of the library.
Bytes make_frame(const Bytes& payload);
// Reply frame with the given status word, the reserved byte 0 and `data`.
Bytes make_reply(std::uint16_t status, const Bytes& data = {});
// The payload inside a request frame.
inline Bytes payload_of(const Bytes& frame) { return Bytes(frame.begin() + 3, frame.end() - 2); }

// Installs its platform for the life of the object, its clock at 2026-11-23
// 10:00, and puts the link state back to its values at load.
class ScriptedTerminal {
public:
    ScriptedTerminal();
    ~ScriptedTerminal();
    ScriptedTerminal(const ScriptedTerminal&) = delete;
    ScriptedTerminal& operator=(const ScriptedTerminal&) = delete;

    // The raw reply stream to a whole request frame; empty is silence.
    std::function<Bytes(const Bytes& request)> respond = [](const Bytes&) { return make_reply(0); };
    std::vector<Bytes> requests;

    std::vector<Bytes> payloads() const;
    Bytes last_payload() const { return requests.empty() ? Bytes{} : payload_of(requests.back()); }

    // Devices with the script behind them.
    void add_hid_device(sim::InProcessPlatform::HidDevice device);
    void add_serial_port(sim::InProcessPlatform::SerialPort port);
    // Adds the HID node /dev/hidraw0 and opens it the way open_device leaves the
    // link: HID, report length 256, time-outs 5000 and 0. Gives the handle.
    int open_hid_link();

    sim::InProcessPlatform platform;

private:
    std::shared_ptr<sim::Responder> script_;
};

}  // namespace qz::test
