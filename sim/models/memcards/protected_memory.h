// Memory whose positions can be protected one by one: a protected byte keeps its
// value for ever. The SLE4442 (its first 32 bytes) and the SLE4428 work this way.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "sim/core/status.h"
#include "sim/models/memcards/memory_chip.h"

namespace qz::sim {

class ProtectedMemory {
public:
    ProtectedMemory(std::size_t size, std::size_t protectable) : bytes_(size, 0xFF), protected_(protectable) {}

    std::size_t size() const { return bytes_.size(); }
    std::size_t protectable() const { return protected_.size(); }
    std::span<std::uint8_t> bytes() { return bytes_; }
    std::span<const std::uint8_t> read(std::size_t offset, std::size_t length) const {
        return std::span(bytes_).subspan(offset, length);
    }
    bool is_protected(std::size_t position) const { return position < protected_.size() && protected_[position]; }
    void protect(std::size_t position) { protected_.at(position) = true; }

    // Refused, with nothing written, when it would change a protected byte.
    std::uint16_t write(std::size_t offset, std::span<const std::uint8_t> data) {
        for (std::size_t i = 0; i < data.size(); ++i)
            if (is_protected(offset + i) && bytes_[offset + i] != data[i]) return status::refused;
        std::ranges::copy(data, bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
        return status::ok;
    }

private:
    std::vector<std::uint8_t> bytes_;
    std::vector<bool> protected_;
};

}  // namespace qz::sim
