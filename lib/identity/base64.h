// Base64 of RFC 4648 (standard alphabet, "=" padding) in one line, and a file
// given to a host in that form.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qz::identity {

constexpr std::size_t base64_length(std::size_t bytes) { return (bytes + 2) / 3 * 4; }

// Writes base64_length(bytes.size()) characters to `text`, no terminator.
void encode_base64(std::span<const std::uint8_t> bytes, char* text);

// Only this much of a file is encoded; the rest is dropped without notice.
inline constexpr std::size_t max_base64_file_bytes = 0x200000;

// Encodes the first 2 MiB of the file at `path` into `text` (room for
// base64_length(max_base64_file_bytes) characters). Result: characters written
// plus 1; -19 for a file that cannot be opened for reading and writing, or is empty.
int file_to_base64(const char* path, char* text);

}  // namespace qz::identity
