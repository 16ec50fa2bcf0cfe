// The shape of nearly every export: build a payload, run one transaction into a
// reply area of the library's own, copy out what the caller should have.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

#include "link/link_state.h"
#include "link/status.h"
#include "link/transact.h"

namespace qz::link {

// A request payload under construction: class, instruction, parameter, data.
class Payload {
public:
    Payload(std::initializer_list<std::uint8_t> head) : bytes_(head) {}

    Payload& add(std::uint8_t byte) {
        bytes_.push_back(byte);
        return *this;
    }
    Payload& add(std::span<const std::uint8_t> bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    Payload& add_be16(std::uint16_t value) {
        return add(static_cast<std::uint8_t>(value >> 8)).add(static_cast<std::uint8_t>(value));
    }
    Payload& add_zeros(std::size_t count) {
        bytes_.resize(bytes_.size() + count);
        return *this;
    }

    std::span<const std::uint8_t> bytes() const { return bytes_; }

private:
    std::vector<std::uint8_t> bytes_;
};

// A reply area of `Capacity` bytes and the reply's length as the terminal gave it.
template <std::size_t Capacity>
struct Reply {
    std::array<std::uint8_t, Capacity> area{};
    int length = 0;

    std::span<const std::uint8_t> data() const {
        return std::span(area).first(length > 0 ? static_cast<std::size_t>(length) : 0);
    }

    // For a command that must hand `count` data bytes to its caller: `result`
    // unless the transaction succeeded with fewer, then status_reply_too_short.
    int require(int result, std::size_t count) const {
        if (result == 0 && (length < 0 || static_cast<std::size_t>(length) < count)) return status_reply_too_short;
        return result;
    }
};

template <std::size_t Capacity>
int transact(int icdev, const Payload& payload, Reply<Capacity>& reply) {
    return dev_transact(icdev, payload.bytes(), reply.length, reply.area);
}

// Sets the link time-outs for one command and, when it ends whatever the outcome,
// the values the command leaves behind.
class TimeoutsForCommand {
public:
    TimeoutsForCommand(std::uint32_t read_ms, std::uint32_t write_gap_ms, std::uint32_t after_read_ms = 5000,
                       std::uint32_t after_write_gap_ms = 0)
        : after_read_ms_(after_read_ms), after_write_gap_ms_(after_write_gap_ms) {
        set_link_timeouts(read_ms, write_gap_ms);
    }
    ~TimeoutsForCommand() { set_link_timeouts(after_read_ms_, after_write_gap_ms_); }
    TimeoutsForCommand(const TimeoutsForCommand&) = delete;
    TimeoutsForCommand& operator=(const TimeoutsForCommand&) = delete;

private:
    std::uint32_t after_read_ms_;
    std::uint32_t after_write_gap_ms_;
};

}  // namespace qz::link
