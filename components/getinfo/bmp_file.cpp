#include "bmp_file.h"

#include <array>
#include <fstream>
#include <vector>

namespace qz::getinfo {
namespace {

constexpr std::uint32_t headers_size = 14 + 40;
constexpr std::uint32_t pixels_per_metre = 2835;  // 72 dots per inch

void put_le(std::vector<std::uint8_t>& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

}  // namespace

bool write_bmp24(const std::string& path, int width, int height, std::span<const std::uint8_t> rgb) {
    const auto w = static_cast<std::uint32_t>(width);
    const auto h = static_cast<std::uint32_t>(height);
    const std::uint32_t row = (w * 3 + 3) / 4 * 4;
    const std::uint32_t image_size = row * h;

    std::vector<std::uint8_t> file;
    file.reserve(headers_size + image_size);
    file.push_back('B');
    file.push_back('M');
    put_le(file, headers_size + image_size, 4);
    put_le(file, 0, 4);  // reserved
    put_le(file, headers_size, 4);
    put_le(file, 40, 4);  // BITMAPINFOHEADER
    put_le(file, w, 4);
    put_le(file, h, 4);  // positive: bottom row first
    put_le(file, 1, 2);  // planes
    put_le(file, 24, 2);
    put_le(file, 0, 4);  // no compression
    put_le(file, image_size, 4);
    put_le(file, pixels_per_metre, 4);
    put_le(file, pixels_per_metre, 4);
    put_le(file, 0, 4);  // colours used
    put_le(file, 0, 4);  // important colours

    for (std::uint32_t y = h; y-- > 0;) {
        const std::uint8_t* pixel = rgb.data() + static_cast<std::size_t>(y) * w * 3;
        for (std::uint32_t x = 0; x < w; ++x, pixel += 3) file.insert(file.end(), {pixel[2], pixel[1], pixel[0]});
        file.resize(file.size() + (row - w * 3));
    }

    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    return static_cast<bool>(out.flush());
}

}  // namespace qz::getinfo
