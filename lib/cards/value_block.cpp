#include "cards/value_block.h"

#include <cstddef>

namespace qz::cards::rf {
namespace {

constexpr std::size_t value_size = 4;
constexpr std::size_t inverted_offset = 4;
constexpr std::size_t copy_offset = 8;
constexpr std::size_t address_offset = 12;

std::array<std::uint8_t, value_size> value_bytes(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}

}  // namespace

Block value_block(std::uint32_t value, std::uint8_t block) {
    Block bytes{};
    const auto plain = value_bytes(value);
    for (std::size_t i = 0; i < value_size; ++i) {
        bytes[i] = plain[i];
        bytes[inverted_offset + i] = static_cast<std::uint8_t>(~plain[i]);
        bytes[copy_offset + i] = plain[i];
    }
    const auto inverted = static_cast<std::uint8_t>(~block);
    bytes[address_offset] = block;
    bytes[address_offset + 1] = inverted;
    bytes[address_offset + 2] = block;
    bytes[address_offset + 3] = inverted;
    return bytes;
}

std::optional<std::uint32_t> block_value(std::span<const std::uint8_t, block_size> bytes) {
    for (std::size_t i = 0; i < value_size; ++i)
        if (bytes[i] == bytes[inverted_offset + i]) return std::nullopt;
    for (std::size_t i = 0; i < value_size; ++i)
        if (bytes[i] != bytes[copy_offset + i]) return std::nullopt;
    const auto address = bytes.subspan<address_offset>();
    if (address[0] != address[2] || address[0] == address[1] || address[1] != address[3]) return std::nullopt;
    return static_cast<std::uint32_t>(bytes[0] | bytes[1] << 8 | bytes[2] << 16 | static_cast<std::uint32_t>(bytes[3]) << 24);
}

int read_value(int icdev, std::uint8_t block, std::uint32_t& value) {
    Block bytes{};
    if (run(icdev, read_block, {block}, bytes.data()) != 0) return status_value_unreadable;
    const auto found = block_value(bytes);
    if (!found) return refused;
    value = *found;
    return 0;
}

int change_value(int icdev, std::uint8_t block, Change change, std::uint32_t amount) {
    std::uint32_t current = 0;
    if (read_value(icdev, block, current) != 0) return status_value_unreadable;
    if (change == Change::increment && std::uint64_t{current} + amount > max_value) return status_value_overflow;
    if (change == Change::decrement && current < amount) return status_value_underflow;
    const auto amount_bytes = value_bytes(amount);
    const FieldCommand& command = change == Change::increment ? increment : decrement;
    const int result = run(icdev, command, Arguments{block}.add(amount_bytes.data(), value_size), nullptr);
    if (result != 0) return result;
    return run(icdev, transfer, {block}, nullptr);
}

}  // namespace qz::cards::rf
