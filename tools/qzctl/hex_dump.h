// Card memory for people and scripts: hex dumps 16 bytes a row, and hex arguments.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qzctl {

// Rows of "\n0040  51 5A 33 32 ...  QZ32..." from `first_address` on, each behind a line break.
std::string hex_dump(const std::vector<unsigned char>& bytes, std::size_t first_address);

// The bytes of `text`, an even count of hex digits (blanks and colons between them
// allowed); Failure(exit_usage) naming `what` otherwise.
std::vector<unsigned char> hex_bytes(const std::string& text, const std::string& what);

// As hex_bytes, exactly `length` bytes.
std::vector<unsigned char> hex_argument(const std::string& text, std::size_t length, const std::string& what);

}  // namespace qzctl
