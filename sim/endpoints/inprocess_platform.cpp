#include "sim/endpoints/inprocess_platform.h"

#include <algorithm>
#include <stdexcept>

namespace qz::sim {

using platform::ByteRead;

void InProcessPlatform::add_hid_device(HidDevice device) {
    auto slot = std::make_unique<HidSlot>();
    slot->device = std::move(device);
    if (slot->device.terminal) slot->endpoint.emplace(*slot->device.terminal, slot->device.report_length);
    hid_slots_.push_back(std::move(slot));
}

void InProcessPlatform::add_serial_port(SerialPort port) {
    auto slot = std::make_unique<SerialSlot>();
    slot->port = std::move(port);
    if (slot->port.terminal) slot->endpoint.emplace(*slot->port.terminal);
    serial_slots_.push_back(std::move(slot));
}

void InProcessPlatform::queue_stray_report(std::string_view path, std::vector<std::uint8_t> report) {
    for (const auto& slot : hid_slots_)
        if (slot->device.path == path) return slot->stray_reports.push_back(std::move(report));
    throw std::out_of_range("no HID device " + std::string(path));
}

const std::vector<std::vector<std::uint8_t>>& InProcessPlatform::reports_written(std::string_view path) const {
    for (const auto& slot : hid_slots_)
        if (slot->device.path == path) return slot->written;
    throw std::out_of_range("no HID device " + std::string(path));
}

const InProcessPlatform::SerialSlot& InProcessPlatform::serial_named(std::string_view name) const {
    for (const auto& slot : serial_slots_)
        if (slot->port.name == name) return *slot;
    throw std::out_of_range("no serial port " + std::string(name));
}

const std::vector<std::uint8_t>& InProcessPlatform::bytes_written(std::string_view port) const {
    return serial_named(port).written;
}

int InProcessPlatform::purges(std::string_view port) const { return serial_named(port).purges; }

InProcessPlatform::HidSlot* InProcessPlatform::hid(int handle) {
    const auto found = handles_.find(handle);
    if (found == handles_.end()) return nullptr;
    auto* slot = std::get_if<HidSlot*>(&found->second);
    return slot ? *slot : nullptr;
}

InProcessPlatform::SerialSlot* InProcessPlatform::serial(int handle) {
    const auto found = handles_.find(handle);
    if (found == handles_.end()) return nullptr;
    auto* slot = std::get_if<SerialSlot*>(&found->second);
    return slot ? *slot : nullptr;
}

std::optional<std::string> InProcessPlatform::hid_path(int index) {
    if (index < 0 || static_cast<std::size_t>(index) >= hid_slots_.size()) return std::nullopt;
    return hid_slots_[static_cast<std::size_t>(index)]->device.path;
}

int InProcessPlatform::hid_open(const std::string& path) {
    hid_paths_asked_.push_back(path);
    const auto found = std::find_if(hid_slots_.begin(), hid_slots_.end(),
                                    [&](const auto& slot) { return slot->device.path == path; });
    if (found == hid_slots_.end() || (*found)->device.held_elsewhere || (*found)->open) return -1;
    (*found)->open = true;
    handles_.emplace(next_handle_, found->get());
    return next_handle_++;
}

std::optional<platform::HidIdentity> InProcessPlatform::hid_identity(int handle) {
    const HidSlot* slot = hid(handle);
    if (!slot) return std::nullopt;
    return platform::HidIdentity{slot->device.vendor, slot->device.product};
}

std::optional<std::uint16_t> InProcessPlatform::hid_feature_report_length(int handle) {
    const HidSlot* slot = hid(handle);
    if (!slot || !slot->device.report_length_readable) return std::nullopt;
    return slot->device.report_length;
}

bool InProcessPlatform::hid_set_feature(int handle, std::span<const std::uint8_t> report) {
    HidSlot* slot = hid(handle);
    if (!slot || report.empty()) return false;
    slot->written.emplace_back(report.begin(), report.end());
    if (!slot->endpoint) return report.size() == slot->device.report_length;
    return slot->endpoint->set_feature(report);
}

bool InProcessPlatform::hid_get_feature(int handle, std::span<std::uint8_t> report) {
    ++hid_reads_;
    HidSlot* slot = hid(handle);
    if (!slot || report.empty()) return false;
    if (!slot->stray_reports.empty()) {
        const auto stray = std::move(slot->stray_reports.front());
        slot->stray_reports.pop_front();
        std::copy_n(stray.begin(), std::min(stray.size(), report.size()), report.begin());
        return true;
    }
    if (slot->endpoint && slot->endpoint->get_feature(report)) return true;
    now_ += 1;
    return false;
}

int InProcessPlatform::serial_open(const std::string& name, const platform::SerialSettings& settings) {
    serial_ports_asked_.push_back(name);
    const auto found = std::find_if(serial_slots_.begin(), serial_slots_.end(),
                                    [&](const auto& slot) { return slot->port.name == name; });
    if (found == serial_slots_.end()) return static_cast<int>(platform::SerialOpenError::unavailable);
    SerialSlot& slot = **found;
    if (slot.port.refusal) return static_cast<int>(*slot.port.refusal);
    if (slot.open) return static_cast<int>(platform::SerialOpenError::in_use);
    serial_settings_.push_back(settings);
    slot.open = true;
    slot.read_timeout_ms = std::max<std::uint32_t>(settings.read_timeout_ms, 1);
    handles_.emplace(next_handle_, &slot);
    return next_handle_++;
}

void InProcessPlatform::serial_purge(int handle) {
    SerialSlot* slot = serial(handle);
    if (!slot) return;
    ++slot->purges;
    if (slot->endpoint) slot->endpoint->purge();
}

bool InProcessPlatform::serial_write(int handle, std::uint8_t byte) {
    SerialSlot* slot = serial(handle);
    if (!slot) return false;
    slot->written.push_back(byte);
    if (slot->endpoint) slot->endpoint->receive(std::span(&byte, 1));
    return true;
}

ByteRead InProcessPlatform::serial_read(int handle, std::uint8_t& byte) {
    SerialSlot* slot = serial(handle);
    if (!slot) return ByteRead::failed;
    if (slot->endpoint) {
        if (const auto next = slot->endpoint->transmit()) {
            byte = *next;
            return ByteRead::received;
        }
    }
    now_ += slot->read_timeout_ms;
    return ByteRead::timed_out;
}

bool InProcessPlatform::close(int handle) {
    const auto found = handles_.find(handle);
    if (found == handles_.end()) return false;
    std::visit([](auto* slot) { slot->open = false; }, found->second);
    // What the host had not read of a serial port is gone with the handle.
    if (auto* const* port = std::get_if<SerialSlot*>(&found->second); port && (*port)->endpoint)
        (*port)->endpoint->purge();
    handles_.erase(found);
    return true;
}

}  // namespace qz::sim
