// The contactless memory card commands as data: what goes in front of the
// caller's arguments, how much reply the command takes, and what of the reply
// the caller gets. One helper runs any of them, so the rf_, MF_ and NTAG215_
// exports are rows of tables and a fix to the shape lands once.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <vector>

namespace qz::cards {

// Instructions of the contactless memory cards (class 0xC1 unless a row says otherwise).
enum FieldInstruction : std::uint8_t {
    instruction_deselect = 0x33,
    instruction_select = 0x40,
    instruction_halt = 0x45,
    instruction_read = 0x46,
    instruction_write_block = 0x47,
    instruction_increment = 0x48,
    instruction_decrement = 0x49,
    instruction_restore = 0x4A,
    instruction_transfer = 0x4B,
    instruction_write_page = 0x4C,
    instruction_reset_field = 0x4E,
    instruction_page_authenticate = 0x4F,
    instruction_read_pages = 0x50,
    instruction_sector_authenticate = 0x5F,
    // Class 0x00, the terminal's own: the antenna's state and the UIDs of all cards in the field.
    instruction_antenna = 0x0E,
    instruction_field_uids = 0x0F,
    // Class 0x32: the state of the card in the field.
    instruction_field_status = 0x70,
};

// The reply area of a command unless its row gives another.
inline constexpr std::size_t field_reply_room = 100;

// What of the reply data the caller gets.
struct ReplyUse {
    enum Kind : std::uint8_t {
        nothing,   // the status alone
        all,       // every reply byte, as many as came
        bytes,     // `count` bytes from `offset`; a shorter reply is refused
        reversed,  // as `bytes`, last byte first
    };
    Kind kind = nothing;
    std::size_t offset = 0;
    std::size_t count = 0;
};

struct FieldCommand {
    std::uint8_t class_byte;
    std::uint8_t instruction;
    std::optional<std::uint8_t> parameter;  // the byte behind the instruction, where the command has one
    std::size_t reply_room;                 // a longer reply is refused (status_reply_too_long)
    ReplyUse use;
    int refused;  // the family's result for a missing input
};

// The bytes behind a command's head, gathered from the caller's inputs; a null
// input, or more than the send area holds, marks them refused.
class Arguments {
public:
    // A send area of 200 bytes, less class, instruction and parameter.
    static constexpr std::size_t capacity = 197;

    Arguments(std::initializer_list<std::uint8_t> bytes) {
        std::ranges::copy(bytes, bytes_.begin());
        size_ = bytes.size();
    }

    Arguments& add(const unsigned char* input, std::size_t length) {
        if ((input == nullptr && length != 0) || length > capacity - size_) {
            refused_ = true;
            return *this;
        }
        std::copy_n(input, length, bytes_.begin() + static_cast<std::ptrdiff_t>(size_));
        size_ += length;
        return *this;
    }
    bool refused() const { return refused_; }
    std::span<const std::uint8_t> bytes() const { return std::span(bytes_).first(size_); }

private:
    std::array<std::uint8_t, capacity> bytes_{};
    std::size_t size_ = 0;
    bool refused_ = false;
};

// Sends `command` with `arguments` and hands what the reply yields to `out`.
// A refused input, or a null `out` where the reply yields something, gives
// command.refused before anything is sent.
int run(int icdev, const FieldCommand& command, const Arguments& arguments, std::uint8_t* out);

// As run, for a command whose reply yields all it carries: the reply data.
int run_for_reply(int icdev, const FieldCommand& command, const Arguments& arguments,
                  std::vector<std::uint8_t>& reply);

}  // namespace qz::cards
