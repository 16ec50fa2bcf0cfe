// HID on Linux: hidraw nodes of the device folder, in the order of their numbers.
#include <fcntl.h>
#include <linux/hidraw.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <vector>

#include "platform/hid_descriptor.h"
#include "platform/linux/linux_platform.h"
#include "platform/paths.h"

namespace qz::platform {
namespace {

constexpr std::string_view node_prefix = "hidraw";

std::optional<unsigned> node_number(const std::string& name) {
    if (!name.starts_with(node_prefix) || name.size() == node_prefix.size()) return std::nullopt;
    unsigned number = 0;
    const char* first = name.data() + node_prefix.size();
    const char* last = name.data() + name.size();
    const auto [end, error] = std::from_chars(first, last, number);
    if (error != std::errc{} || end != last) return std::nullopt;
    return number;
}

std::vector<std::pair<unsigned, std::string>> hidraw_nodes() {
    std::vector<std::pair<unsigned, std::string>> nodes;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(hidraw_dir(), error)) {
        const std::string name = entry.path().filename().string();
        if (const auto number = node_number(name)) nodes.emplace_back(*number, entry.path().string());
    }
    std::sort(nodes.begin(), nodes.end());
    return nodes;
}

}  // namespace

int ioctl_retrying(int fd, unsigned long request, void* argument) {
    int result;
    do {
        result = ::ioctl(fd, request, argument);
    } while (result == -1 && errno == EINTR);
    return result;
}

std::optional<std::string> LinuxPlatform::hid_path(int index) {
    if (index < 0) return std::nullopt;
    auto nodes = hidraw_nodes();
    if (static_cast<std::size_t>(index) >= nodes.size()) return std::nullopt;
    return std::move(nodes[static_cast<std::size_t>(index)].second);
}

int LinuxPlatform::hid_open(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0) return -1;
    // hidraw has no exclusivity of its own; the lock gives it between processes.
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return -1;
    }
    handles_.add(fd, {.kind = HandleKind::hid});
    return fd;
}

std::optional<HidIdentity> LinuxPlatform::hid_identity(int handle) {
    if (!handles_.is(handle, HandleKind::hid)) return std::nullopt;
    hidraw_devinfo info{};
    if (ioctl_retrying(handle, HIDIOCGRAWINFO, &info) < 0) return std::nullopt;
    return HidIdentity{static_cast<std::uint16_t>(info.vendor), static_cast<std::uint16_t>(info.product)};
}

std::optional<std::uint16_t> LinuxPlatform::hid_feature_report_length(int handle) {
    if (!handles_.is(handle, HandleKind::hid)) return std::nullopt;
    int size = 0;
    if (ioctl_retrying(handle, HIDIOCGRDESCSIZE, &size) < 0 || size < 0 || size > HID_MAX_DESCRIPTOR_SIZE)
        return std::nullopt;
    hidraw_report_descriptor descriptor{};
    descriptor.size = static_cast<std::uint32_t>(size);
    if (ioctl_retrying(handle, HIDIOCGRDESC, &descriptor) < 0) return std::nullopt;
    return feature_report_length(std::span(descriptor.value, descriptor.size));
}

bool LinuxPlatform::hid_set_feature(int handle, std::span<const std::uint8_t> report) {
    if (!handles_.is(handle, HandleKind::hid) || report.empty()) return false;
    // The request is read-write: some drivers copy the buffer back.
    std::vector<std::uint8_t> buffer(report.begin(), report.end());
    return ioctl_retrying(handle, HIDIOCSFEATURE(buffer.size()), buffer.data()) >= 0;
}

bool LinuxPlatform::hid_get_feature(int handle, std::span<std::uint8_t> report) {
    if (!handles_.is(handle, HandleKind::hid) || report.empty()) return false;
    return ioctl_retrying(handle, HIDIOCGFEATURE(report.size()), report.data()) >= 0;
}

}  // namespace qz::platform
