#include "support/scripted_terminal.h"

#include <algorithm>

#include "link/link_state.h"

namespace qz::test {
namespace {

class Script final : public sim::Responder {
public:
    explicit Script(ScriptedTerminal& owner) : owner_(owner) {}
    std::vector<std::uint8_t> answer(std::span<const std::uint8_t> request_frame) override {
        owner_.requests.emplace_back(request_frame.begin(), request_frame.end());
        return owner_.respond(owner_.requests.back());
    }

private:
    ScriptedTerminal& owner_;
};

}  // namespace

Bytes make_frame(const Bytes& payload) {
    Bytes frame{0x02, static_cast<std::uint8_t>(payload.size() >> 8), static_cast<std::uint8_t>(payload.size())};
    std::uint8_t bcc = 0;
    for (auto b : payload) {
        frame.push_back(b);
        bcc ^= b;
    }
    frame.push_back(bcc);
    frame.push_back(0x03);
    return frame;
}

Bytes make_reply(std::uint16_t status, const Bytes& data) {
    Bytes payload(3 + data.size());
    payload[0] = static_cast<std::uint8_t>(status >> 8);
    payload[1] = static_cast<std::uint8_t>(status);
    std::copy(data.begin(), data.end(), payload.begin() + 3);
    return make_frame(payload);
}

ScriptedTerminal::ScriptedTerminal() : script_(std::make_shared<Script>(*this)) {
    platform.set_local_time({2026, 11, 23, 10, 0, 0, 0});
    platform::install(&platform);
    link::reset_link_state();
}

ScriptedTerminal::~ScriptedTerminal() {
    platform::install(nullptr);
    link::reset_link_state();
}

std::vector<Bytes> ScriptedTerminal::payloads() const {
    std::vector<Bytes> all;
    for (const Bytes& frame : requests) all.push_back(payload_of(frame));
    return all;
}

void ScriptedTerminal::add_hid_device(sim::InProcessPlatform::HidDevice device) {
    device.terminal = script_;
    platform.add_hid_device(std::move(device));
}

void ScriptedTerminal::add_serial_port(sim::InProcessPlatform::SerialPort port) {
    port.terminal = script_;
    platform.add_serial_port(std::move(port));
}

int ScriptedTerminal::open_hid_link() {
    add_hid_device({.path = "/dev/hidraw0"});
    const int handle = platform.hid_open("/dev/hidraw0");
    link::link_state().kind = link::LinkKind::hid;
    link::link_state().hid_report_length = 256;
    link::set_link_timeouts(5000, 0);
    return handle;
}

}  // namespace qz::test
