// The handles a platform backend handed out, so that it acts on nothing else.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace qz::platform {

enum class HandleKind : std::uint8_t { hid, serial };

struct HandleInfo {
    HandleKind kind = HandleKind::hid;
    std::uint32_t read_timeout_ms = 0;  // serial ports: how long one byte read waits
};

class HandleRegistry {
public:
    void add(int handle, HandleInfo info);
    std::optional<HandleInfo> find(int handle) const;
    bool is(int handle, HandleKind kind) const;
    // Forgets the handle; false if it was not known.
    bool remove(int handle);

private:
    mutable std::mutex mutex_;
    std::unordered_map<int, HandleInfo> handles_;
};

}  // namespace qz::platform
