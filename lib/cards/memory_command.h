// The one shape of every contact memory card command: class, instruction, 00, the
// argument bytes, then the caller's data; on success the reply goes to the caller.
// Each card family lists its commands as MemoryCommand values and sends them here.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qz::cards {

inline constexpr std::uint8_t memory_card_class = 0xC0;
inline constexpr std::uint8_t record_class = 0xD0;

// What a command hands its caller on success.
enum class Yield : std::uint8_t {
    nothing,
    reply,       // the reply data, by their full length
    first_byte,  // exactly one byte, the first of the reply
};

struct MemoryCommand {
    std::uint8_t card_class = memory_card_class;
    std::uint8_t instruction = 0;
    std::size_t key_length = 0;  // bytes of the caller's code or key that always follow the head
    Yield yield = Yield::nothing;
    std::size_t reply_capacity = 100;  // the reply area; a longer reply is refused with -38
};

// One call of a command: the bytes behind 00, the caller's data (key_length bytes
// plus `data_length`), and where the reply goes.
struct MemoryCall {
    std::span<const std::uint8_t> arguments = {};
    const unsigned char* data = nullptr;
    std::size_t data_length = 0;
    unsigned char* out = nullptr;
    unsigned char* out_length = nullptr;  // if given, the low byte of the reply's length
};

// Sends the command once. -19 for a missing data or output pointer, before
// anything is sent; else the transaction's result.
int send_memory_command(int icdev, const MemoryCommand& command, const MemoryCall& call);

// Argument bytes of a 16-bit number, low byte first or high byte first.
constexpr std::array<std::uint8_t, 2> low_first(unsigned value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)};
}
constexpr std::array<std::uint8_t, 2> high_first(unsigned value) {
    return {static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

}  // namespace qz::cards
