// Writing a 24-bit uncompressed ".bmp" file.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace qz::getinfo {

// `rgb` holds width * height pixels of three bytes, top row first. The file is
// written bottom row first, blue-green-red, rows padded to four bytes.
bool write_bmp24(const std::string& path, int width, int height, std::span<const std::uint8_t> rgb);

}  // namespace qz::getinfo
