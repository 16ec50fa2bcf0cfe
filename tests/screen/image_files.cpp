#include "image_files.h"

#include <fstream>
#include <map>
#include <stdexcept>
#include <vector>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>

namespace qz::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// GIF with a 256-colour table and LZW codes of 9 bits only: each index is sent
// as a literal, and a clear code comes before the table would grow past 9 bits.
Bytes gif(int width, int height, const Bytes& rgb) {
    std::map<Rgb, std::uint8_t> palette;
    Bytes indices;
    for (std::size_t at = 0; at < rgb.size(); at += 3) {
        const Rgb colour{rgb[at], rgb[at + 1], rgb[at + 2]};
        if (!palette.contains(colour)) palette.emplace(colour, static_cast<std::uint8_t>(palette.size()));
        indices.push_back(palette.at(colour));
    }
    const auto le16 = [](int value) { return Bytes{static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)}; };
    Bytes out{'G', 'I', 'F', '8', '9', 'a'};
    for (const Bytes& part : {le16(width), le16(height), Bytes{0xF7, 0, 0}}) out.insert(out.end(), part.begin(), part.end());
    Bytes table(768);
    for (const auto& [colour, index] : palette) std::copy(colour.begin(), colour.end(), table.begin() + index * 3);
    out.insert(out.end(), table.begin(), table.end());
    out.push_back(0x2C);
    for (const Bytes& part : {le16(0), le16(0), le16(width), le16(height), Bytes{0x00, 0x08}})
        out.insert(out.end(), part.begin(), part.end());

    Bytes codes;
    std::uint32_t buffer = 0;
    int bits = 0;
    const auto put = [&](unsigned code) {
        buffer |= code << bits;
        for (bits += 9; bits >= 8; bits -= 8, buffer >>= 8) codes.push_back(static_cast<std::uint8_t>(buffer));
    };
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (i % 250 == 0) put(256);
        put(indices[i]);
    }
    put(257);
    if (bits > 0) codes.push_back(static_cast<std::uint8_t>(buffer));
    for (std::size_t at = 0; at < codes.size(); at += 255) {
        const std::size_t size = std::min<std::size_t>(255, codes.size() - at);
        out.push_back(static_cast<std::uint8_t>(size));
        out.insert(out.end(), codes.begin() + static_cast<std::ptrdiff_t>(at),
                   codes.begin() + static_cast<std::ptrdiff_t>(at + size));
    }
    out.insert(out.end(), {0x00, 0x3B});
    return out;
}

void append(void* context, void* data, int size) {
    auto* bytes = static_cast<Bytes*>(context);
    bytes->insert(bytes->end(), static_cast<std::uint8_t*>(data), static_cast<std::uint8_t*>(data) + size);
}

}  // namespace

void write_image(const std::string& path, ImageFormat format, int width, int height,
                 const std::function<Rgb(int, int)>& colour) {
    Bytes rgb;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const Rgb pixel = colour(x, y);
            rgb.insert(rgb.end(), pixel.begin(), pixel.end());
        }
    Bytes file;
    switch (format) {
        case ImageFormat::png: stbi_write_png_to_func(append, &file, width, height, 3, rgb.data(), width * 3); break;
        case ImageFormat::bmp: stbi_write_bmp_to_func(append, &file, width, height, 3, rgb.data()); break;
        case ImageFormat::jpeg: stbi_write_jpg_to_func(append, &file, width, height, 3, rgb.data(), 100); break;
        case ImageFormat::gif: file = gif(width, height, rgb); break;
    }
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
}

void write_png_row(const std::string& path, int channels, const std::vector<std::uint8_t>& pixels) {
    const int width = static_cast<int>(pixels.size()) / channels;
    stbi_write_png(path.c_str(), width, 1, channels, pixels.data(), width * channels);
}

}  // namespace qz::test
