// PNG files of what the simulated displays show.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace qz::sim {

// Writes `rgb` (3 bytes a pixel, rows from the top) through a temporary file
// that replaces `path`, so a reader never sees half a picture.
bool write_rgb_png(const std::filesystem::path& path, int width, int height, std::span<const std::uint8_t> rgb);

// The PNG bytes of `rgb`.
std::vector<std::uint8_t> encode_rgb_png(int width, int height, std::span<const std::uint8_t> rgb);

}  // namespace qz::sim
