#define FUSE_USE_VERSION 35
#include "sim/endpoints/hidraw_fuse.h"

#include <fuse.h>
#include <linux/hidraw.h>
#include <linux/input.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string_view>

#include "sim/endpoints/report_descriptor.h"

namespace qz::sim {
namespace {

constexpr std::string_view node_path = "/hidraw0";
constexpr unsigned hidraw_set_feature = _IOC_NR(HIDIOCSFEATURE(0));
constexpr unsigned hidraw_get_feature = _IOC_NR(HIDIOCGFEATURE(0));

HidrawFuse& server() { return *static_cast<HidrawFuse*>(fuse_get_context()->private_data); }

int getattr(const char* path, struct stat* attributes, fuse_file_info*) {
    *attributes = {};
    if (std::string_view(path) == "/") {
        attributes->st_mode = S_IFDIR | 0755;
        attributes->st_nlink = 2;
    } else if (path == node_path) {
        attributes->st_mode = S_IFREG | 0666;
        attributes->st_nlink = 1;
    } else {
        return -ENOENT;
    }
    return 0;
}

int readdir(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, fuse_file_info*, fuse_readdir_flags) {
    if (std::string_view(path) != "/") return -ENOENT;
    for (const char* name : {".", "..", hidraw_node_name}) fill(buffer, name, nullptr, 0, fuse_fill_dir_flags{});
    return 0;
}

int open(const char* path, fuse_file_info*) { return path == node_path ? 0 : -ENOENT; }

int ioctl(const char* path, unsigned int command, void*, fuse_file_info*, unsigned int flags, void* data) {
    if (path != node_path || (flags & FUSE_IOCTL_DIR)) return -ENOTTY;
    try {
        return server().ioctl(command, data);
    } catch (const std::exception&) {
        return -EIO;  // nothing may unwind into FUSE
    }
}

const fuse_operations operations = [] {
    fuse_operations ops{};
    ops.getattr = getattr;
    ops.readdir = readdir;
    ops.open = open;
    ops.ioctl = ioctl;
    return ops;
}();

}  // namespace

HidrawFuse::HidrawFuse(HidEndpoint& endpoint, std::mutex& lock, std::filesystem::path mount_dir)
    : endpoint_(endpoint),
      lock_(lock),
      mount_dir_(std::move(mount_dir)),
      descriptor_(report_descriptor(endpoint.report_length())) {
    // A mount left by a server that died answers nothing; take it away first.
    struct stat state {};
    if (::stat(mount_dir_.c_str(), &state) != 0 && errno == ENOTCONN) ::umount2(mount_dir_.c_str(), MNT_DETACH);
    std::filesystem::create_directories(mount_dir_);
    char program[] = "qzsim";
    char* argv[] = {program, nullptr};
    fuse_args args = FUSE_ARGS_INIT(1, argv);
    fuse_ = fuse_new(&args, &operations, sizeof operations, this);
    fuse_opt_free_args(&args);
    if (!fuse_) throw std::runtime_error("FUSE could not be set up");
    if (fuse_mount(fuse_, mount_dir_.c_str()) != 0) {
        fuse_destroy(fuse_);
        throw std::runtime_error("FUSE could not mount " + mount_dir_.string());
    }
    loop_ = std::thread([this] { fuse_loop(fuse_); });
}

HidrawFuse::~HidrawFuse() {
    fuse_exit(fuse_);
    // A forced unmount aborts the connection even while a host holds the node
    // open, so the loop ends at once (the mount itself then goes lazily). Only
    // root may force; otherwise the ordinary unmount waits for the node's last close.
    const char* dir = mount_dir_.c_str();
    if (::umount2(dir, MNT_FORCE) == 0 || (errno == EBUSY && ::umount2(dir, MNT_DETACH) == 0)) {
        loop_.join();
        fuse_unmount(fuse_);
    } else {
        fuse_unmount(fuse_);
        loop_.join();
    }
    fuse_destroy(fuse_);
}

int HidrawFuse::ioctl(unsigned int command, void* data) {
    const std::size_t size = _IOC_SIZE(command);
    const auto bytes = std::span(static_cast<std::uint8_t*>(data), size);
    switch (command) {
        case HIDIOCGRDESCSIZE: {
            const int length = static_cast<int>(descriptor_.size());
            std::memcpy(data, &length, sizeof length);
            return 0;
        }
        case HIDIOCGRDESC: {
            hidraw_report_descriptor out{};
            out.size = static_cast<__u32>(descriptor_.size());
            std::copy(descriptor_.begin(), descriptor_.end(), out.value);
            std::memcpy(data, &out, sizeof out);
            return 0;
        }
        case HIDIOCGRAWINFO: {
            const hidraw_devinfo info{BUS_USB, static_cast<__s16>(usb_vendor), static_cast<__s16>(usb_product)};
            std::memcpy(data, &info, sizeof info);
            return 0;
        }
    }
    if (_IOC_TYPE(command) != 'H' || _IOC_DIR(command) != (_IOC_READ | _IOC_WRITE)) return -ENOTTY;
    std::lock_guard guard(lock_);
    switch (_IOC_NR(command)) {
        case hidraw_set_feature: return endpoint_.set_feature(bytes) ? static_cast<int>(size) : -EPIPE;
        case hidraw_get_feature: {
            const auto count = endpoint_.get_feature(bytes);
            return count ? static_cast<int>(*count) : -EPIPE;
        }
    }
    return -ENOTTY;
}

}  // namespace qz::sim
