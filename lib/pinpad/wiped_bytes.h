// Key material and PINs in local buffers: overwritten when the buffer goes out of
// scope, so that nothing secret lingers on the stack after a call.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qz::pinpad {

// Overwrites `bytes` with zeros in a way the optimiser keeps.
inline void wipe(std::span<std::uint8_t> bytes) {
    volatile std::uint8_t* out = bytes.data();
    for (std::size_t i = 0; i < bytes.size(); ++i) out[i] = 0;
}

template <std::size_t Size>
struct WipedBytes {
    std::array<std::uint8_t, Size> bytes{};

    WipedBytes() = default;
    ~WipedBytes() { wipe(bytes); }
    WipedBytes(const WipedBytes&) = delete;
    WipedBytes& operator=(const WipedBytes&) = delete;

    std::uint8_t* data() { return bytes.data(); }
    const std::uint8_t* data() const { return bytes.data(); }
};

}  // namespace qz::pinpad
