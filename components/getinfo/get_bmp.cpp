// Stand-in photo component: GetBmp(path, 2) decodes the ".wlt" file at `path` and
// writes the picture beside it as a 24-bit ".bmp" of the same base name. The real
// identity photo format is not decoded here; the file must hold an ordinary PNG,
// JPEG or BMP image, and anything else gets the format error.
#include <stb/stb_image.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string_view>
#include <vector>

#include "bmp_file.h"

namespace {

// GetBmp's values.
constexpr int decoded = 1;
constexpr int other_error = -1;     // bad argument, or the ".bmp" could not be written
constexpr int suffix_error = -2;    // the path does not end in ".wlt"
constexpr int open_error = -3;      // the file cannot be read
constexpr int format_error = -4;    // not a picture this component decodes

constexpr int usb_mode = 2;
constexpr std::size_t max_file_bytes = 16u << 20;

bool has_wlt_suffix(std::string_view path) {
    constexpr std::string_view suffix = ".wlt";
    if (path.size() < suffix.size()) return false;
    const std::string_view tail = path.substr(path.size() - suffix.size());
    return std::equal(tail.begin(), tail.end(), suffix.begin(),
                      [](char c, char s) { return std::tolower(static_cast<unsigned char>(c)) == s; });
}

struct ImageDeleter {
    void operator()(stbi_uc* pixels) const { stbi_image_free(pixels); }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) int GetBmp(const char* path, int mode) {
    if (path == nullptr || mode != usb_mode) return other_error;
    const std::string_view wlt(path);
    if (!has_wlt_suffix(wlt)) return suffix_error;

    std::ifstream in(path, std::ios::binary);
    if (!in) return open_error;
    std::vector<unsigned char> bytes;
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (in.bad()) return open_error;
    if (bytes.empty() || bytes.size() > max_file_bytes) return format_error;

    int width = 0, height = 0, channels = 0;
    const std::unique_ptr<stbi_uc, ImageDeleter> pixels(
        stbi_load_from_memory(bytes.data(), static_cast<int>(bytes.size()), &width, &height, &channels, 3));
    if (!pixels) return format_error;

    std::string bmp(wlt.substr(0, wlt.size() - 4));
    bmp += ".bmp";
    const std::span<const std::uint8_t> rgb(pixels.get(), static_cast<std::size_t>(width) * height * 3);
    if (!qz::getinfo::write_bmp24(bmp, width, height, rgb)) {
        std::error_code ignored;
        std::filesystem::remove(bmp, ignored);
        return other_error;
    }
    return decoded;
}
