// The Application File Locator of a GET PROCESSING OPTIONS reply.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qz::bank {

inline constexpr std::size_t afl_entry_size = 4;

// Takes the reply as format 1 (80, a one-byte length, two bytes of AIP) whatever
// it is, and copies the whole 4-byte groups from offset 4 on that lie inside the
// reply (status words included) to `entries`, as far as it holds them. Returns the
// number of bytes copied.
std::size_t ExtractAfl(std::span<const std::uint8_t> reply, std::span<std::uint8_t> entries);

}  // namespace qz::bank
