// What every contact memory chip shares: the command arguments it reads, the
// statuses it answers, and the codes it guards itself with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <vector>

#include "sim/core/terminal.h"

namespace qz::sim {

namespace status {
// The command belongs to another kind of memory card than the one selected.
inline constexpr std::uint16_t wrong_card = 0x6981;
// The command needs a code (PSC, security code, erase key) presented first.
inline constexpr std::uint16_t code_required = 0x6982;
// The code's tries are used up: the chip takes no more attempts, ever.
inline constexpr std::uint16_t code_blocked = 0x6983;
// A wrong code: 63Cx, x the tries left.
inline constexpr std::uint16_t code_wrong = 0x63C0;
// The positions are protected, a fuse is blown or a counter has run out.
inline constexpr std::uint16_t refused = 0x6985;
}  // namespace status

// Reads a command's arguments in order. Too few bytes, or bytes left over at
// finish(), throw ArgumentsLength, which the model answers with wrong_length.
class Arguments {
public:
    struct Length : std::runtime_error {
        Length() : std::runtime_error("wrong length") {}
    };

    explicit Arguments(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::uint8_t byte() { return take(1)[0]; }
    unsigned low_first() {
        const auto two = take(2);
        return two[0] | two[1] << 8u;
    }
    unsigned high_first() {
        const auto two = take(2);
        return two[0] << 8u | two[1];
    }
    std::span<const std::uint8_t> take(std::size_t count) {
        if (count > bytes_.size()) throw Length();
        const auto taken = bytes_.first(count);
        bytes_ = bytes_.subspan(count);
        return taken;
    }
    void finish() const {
        if (!bytes_.empty()) throw Length();
    }

private:
    std::span<const std::uint8_t> bytes_;
};

// A code with a counter of tries: a wrong attempt counts down, a right one sets
// the counter back to full and opens what the code guards until power-down.
class GuardCode {
public:
    GuardCode(std::vector<std::uint8_t> value, unsigned tries, unsigned tries_left)
        : value_(std::move(value)), tries_(tries), tries_left_(tries_left) {}

    std::size_t length() const { return value_.size(); }
    std::span<const std::uint8_t> value() const { return value_; }
    unsigned tries_left() const { return tries_left_; }
    bool open() const { return open_; }

    // ok, code_wrong + tries left, or code_blocked once no try is left.
    std::uint16_t present(std::span<const std::uint8_t> attempt);
    // Only while open: the new value.
    std::uint16_t change(std::span<const std::uint8_t> value);
    void close() { open_ = false; }
    // A new value from the memory the code lives in, whatever the state.
    void store(std::span<const std::uint8_t> value) { value_.assign(value.begin(), value.end()); }

private:
    std::vector<std::uint8_t> value_;
    unsigned tries_;
    unsigned tries_left_;
    bool open_ = false;
};

class MemoryChip {
public:
    virtual ~MemoryChip() = default;
    // What the terminal reads from the chip on a type query (C0 82): the first two
    // bytes tell the kind of card.
    virtual std::vector<std::uint8_t> answer() const = 0;
    // Power comes back (the slot is selected): codes presented before are closed.
    virtual void power_up() = 0;
    // The chip's reply to `instruction`; nothing when it is no command of this chip.
    virtual std::optional<Reply> handle(std::uint8_t instruction, Arguments& arguments) = 0;
};

Reply ok_reply(std::vector<std::uint8_t> data = {});
inline Reply ok_reply_of(std::span<const std::uint8_t> data) { return ok_reply({data.begin(), data.end()}); }

}  // namespace qz::sim
