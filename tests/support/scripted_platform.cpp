#include "support/scripted_platform.h"

#include <algorithm>

#include "link/link_state.h"

namespace qz::test {

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

std::optional<std::string> ScriptedPlatform::hid_path(int index) {
    if (index < 0 || static_cast<std::size_t>(index) >= hid_devices.size()) return std::nullopt;
    return hid_devices[static_cast<std::size_t>(index)].path;
}

int ScriptedPlatform::hid_open(const std::string& path) {
    opened_paths.push_back(path);
    const auto device = std::find_if(hid_devices.begin(), hid_devices.end(), [&](auto& d) { return d.path == path; });
    if (device == hid_devices.end() || device->held_elsewhere) return -1;
    const int handle = next_handle_++;
    handles_[handle] = Handle{true, path, 0};
    return handle;
}

std::optional<platform::HidIdentity> ScriptedPlatform::hid_identity(int handle) {
    const auto found = handles_.find(handle);
    if (found == handles_.end() || !found->second.hid) return std::nullopt;
    for (const auto& device : hid_devices)
        if (device.path == found->second.name) return device.identity;
    return std::nullopt;
}

std::optional<std::uint16_t> ScriptedPlatform::hid_feature_report_length(int handle) {
    const auto found = handles_.find(handle);
    if (found == handles_.end() || !found->second.hid) return std::nullopt;
    for (const auto& device : hid_devices)
        if (device.path == found->second.name) return device.report_length;
    return std::nullopt;
}

void ScriptedPlatform::take_request_bytes(std::span<const std::uint8_t> bytes) {
    pending_request_.insert(pending_request_.end(), bytes.begin(), bytes.end());
    if (pending_request_.size() < 3) return;
    const std::size_t total = ((std::size_t{pending_request_[1]} << 8) | pending_request_[2]) + 5;
    if (pending_request_.size() < total) return;
    pending_request_.resize(total);
    requests.push_back(pending_request_);
    queue_reply(respond(pending_request_));
    pending_request_.clear();
}

void ScriptedPlatform::queue_reply(const Bytes& stream) {
    serial_input_.insert(serial_input_.end(), stream.begin(), stream.end());
    for (std::size_t at = 0; at < stream.size(); at += 254)
        reply_reports_.emplace_back(stream.begin() + static_cast<std::ptrdiff_t>(at),
                                    stream.begin() + static_cast<std::ptrdiff_t>(std::min(stream.size(), at + 254)));
}

bool ScriptedPlatform::hid_set_feature(int handle, std::span<const std::uint8_t> report) {
    const auto found = handles_.find(handle);
    if (found == handles_.end() || !found->second.hid) return false;
    written_reports.emplace_back(report.begin(), report.end());
    if (report.empty() || report[0] != 6) return false;
    // A new request makes the terminal drop whatever of an earlier reply is unread.
    if (pending_request_.empty()) reply_reports_.clear();
    // A piece of at most 254 bytes sits right behind the report id; the request's
    // LEN tells its end.
    constexpr std::size_t piece = 254;
    const std::size_t still_needed =
        pending_request_.size() < 3
            ? piece
            : ((std::size_t{pending_request_[1]} << 8) | pending_request_[2]) + 5 - pending_request_.size();
    take_request_bytes(report.subspan(1, std::min({report.size() - 1, piece, still_needed})));
    return true;
}

bool ScriptedPlatform::hid_get_feature(int handle, std::span<std::uint8_t> report) {
    ++get_feature_calls;
    const auto found = handles_.find(handle);
    if (found == handles_.end() || !found->second.hid || report.empty()) return false;
    if (!hid_reports.empty()) {
        auto next = std::move(hid_reports.front());
        hid_reports.pop_front();
        if (!next) {
            now_ms += 1;
            return false;
        }
        std::copy_n(next->begin(), std::min(next->size(), report.size()), report.begin());
        return true;
    }
    if (reply_reports_.empty()) {
        now_ms += 1;  // a failing request takes time on a real device too
        return false;
    }
    const Bytes piece = std::move(reply_reports_.front());
    reply_reports_.pop_front();
    std::fill(report.begin(), report.end(), 0);
    report[0] = 6;
    std::copy_n(piece.begin(), std::min(piece.size(), report.size() - 1), report.begin() + 1);
    return true;
}

int ScriptedPlatform::serial_open(const std::string& name, const platform::SerialSettings& settings) {
    serial_open_names.push_back(name);
    serial_opens.push_back(settings);
    const auto port = serial_ports.find(name);
    if (port == serial_ports.end()) return static_cast<int>(platform::SerialOpenError::unavailable);
    if (port->second.open_result != 0) return port->second.open_result;
    const int handle = next_handle_++;
    handles_[handle] = Handle{false, name, settings.read_timeout_ms};
    return handle;
}

void ScriptedPlatform::serial_purge(int handle) {
    if (handles_.contains(handle)) {
        ++purges;
        serial_input_.clear();
        reply_reports_.clear();
    }
}

bool ScriptedPlatform::serial_write(int handle, std::uint8_t byte) {
    const auto found = handles_.find(handle);
    if (found == handles_.end() || found->second.hid) return false;
    serial_written.push_back(byte);
    const std::uint8_t one[1] = {byte};
    take_request_bytes(one);
    return true;
}

platform::ByteRead ScriptedPlatform::serial_read(int handle, std::uint8_t& byte) {
    const auto found = handles_.find(handle);
    if (found == handles_.end() || found->second.hid) return platform::ByteRead::failed;
    if (serial_input_.empty()) {
        now_ms += std::max<std::uint32_t>(found->second.read_timeout_ms, 1);
        return platform::ByteRead::timed_out;
    }
    byte = serial_input_.front();
    serial_input_.pop_front();
    return platform::ByteRead::received;
}

int ScriptedPlatform::open_hid_link() {
    hid_devices.push_back({.path = "/dev/hidraw0"});
    const int handle = hid_open("/dev/hidraw0");
    link::link_state().kind = link::LinkKind::hid;
    link::link_state().hid_report_length = 256;
    link::set_link_timeouts(5000, 0);
    return handle;
}

bool ScriptedPlatform::close(int handle) {
    if (handles_.erase(handle) == 0) return false;
    closed.insert(handle);
    return true;
}

ScriptedTerminal::ScriptedTerminal() {
    platform::install(&platform);
    link::reset_link_state();
}

ScriptedTerminal::~ScriptedTerminal() {
    platform::install(nullptr);
    link::reset_link_state();
}

}  // namespace qz::test
