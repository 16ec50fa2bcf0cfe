// Image files written by the tests, of any size, in the formats pictures come in.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qz::test {

using Rgb = std::array<std::uint8_t, 3>;
enum class ImageFormat { png, bmp, jpeg, gif };

// Writes `path` with the colour `colour(x, y)` at each pixel. GIF takes at most
// 256 distinct colours.
void write_image(const std::string& path, ImageFormat format, int width, int height,
                 const std::function<Rgb(int, int)>& colour);

// Writes a PNG of one row of `channels`-byte pixels (grey, grey and alpha, RGB, RGBA).
void write_png_row(const std::string& path, int channels, const std::vector<std::uint8_t>& pixels);

}  // namespace qz::test
