#include "sim/models/screen/png_file.h"

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

#include <fstream>
#include <system_error>

namespace qz::sim {
namespace {

void append(void* context, void* data, int size) {
    static_cast<std::ofstream*>(context)->write(static_cast<const char*>(data), size);
}

void append_bytes(void* context, void* data, int size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    auto& out = *static_cast<std::vector<std::uint8_t>*>(context);
    out.insert(out.end(), bytes, bytes + size);
}

}  // namespace

bool write_rgb_png(const std::filesystem::path& path, int width, int height, std::span<const std::uint8_t> rgb) {
    std::filesystem::path temporary = path;
    temporary += ".part";
    {
        std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
        if (!file || stbi_write_png_to_func(append, &file, width, height, 3, rgb.data(), width * 3) == 0) return false;
        if (!file.flush()) return false;
    }
    std::error_code error;
    std::filesystem::rename(temporary, path, error);
    return !error;
}

std::vector<std::uint8_t> encode_rgb_png(int width, int height, std::span<const std::uint8_t> rgb) {
    std::vector<std::uint8_t> png;
    stbi_write_png_to_func(append_bytes, &png, width, height, 3, rgb.data(), width * 3);
    return png;
}

}  // namespace qz::sim
