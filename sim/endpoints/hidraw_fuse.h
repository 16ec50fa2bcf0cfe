// Serves a HID endpoint as a hidraw node through FUSE: a directory with one
// node "hidraw0" that answers the hidraw ioctls (raw info, report descriptor,
// set and get feature). The node is a regular file: FUSE passes on the ioctls
// whose size and direction their number encodes, which all of these do.
#pragma once

#include <filesystem>
#include <mutex>
#include <thread>
#include <vector>

#include "sim/endpoints/hid_endpoint.h"

struct fuse;

namespace qz::sim {

inline constexpr const char* hidraw_node_name = "hidraw0";

class HidrawFuse {
public:
    // Mounts on `mount_dir` (created if missing). Throws std::runtime_error.
    // `lock` guards the endpoint and its terminal against other servers.
    HidrawFuse(HidEndpoint& endpoint, std::mutex& lock, std::filesystem::path mount_dir);
    HidrawFuse(const HidrawFuse&) = delete;
    HidrawFuse& operator=(const HidrawFuse&) = delete;
    // Unmounts.
    ~HidrawFuse();

    std::filesystem::path node() const { return mount_dir_ / hidraw_node_name; }

    // One ioctl on the node: the result the caller sees, or -errno.
    int ioctl(unsigned int command, void* data);

private:
    HidEndpoint& endpoint_;
    std::mutex& lock_;
    std::filesystem::path mount_dir_;
    std::vector<std::uint8_t> descriptor_;
    fuse* fuse_ = nullptr;
    std::thread loop_;
};

}  // namespace qz::sim
