// The project's stand-in photo component, loaded as the library loads it.
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "card_data.h"
#include "identity/card_read.h"
#include "platform/module.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

namespace fs = std::filesystem;
using GetBmp = int (*)(const char*, int);

constexpr int width = 3, height = 2;
// Top row red, green, blue; bottom row white, black, grey.
const Bytes pixels{255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255, 0, 0, 0, 128, 128, 128};

void append(void* context, void* data, int size) {
    auto* out = static_cast<Bytes*>(context);
    out->insert(out->end(), static_cast<std::uint8_t*>(data), static_cast<std::uint8_t*>(data) + size);
}

Bytes png() {
    Bytes out;
    stbi_write_png_to_func(append, &out, width, height, 3, pixels.data(), width * 3);
    return out;
}

std::uint32_t le(const Bytes& bytes, std::size_t at, int size) {
    std::uint32_t value = 0;
    for (int i = size; i-- > 0;) value = value << 8 | bytes.at(at + static_cast<std::size_t>(i));
    return value;
}

void write_bytes(const fs::path& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// A decoded 24-bit BMP file: width, height and the pixels, top row first, RGB.
struct Picture {
    int width = 0, height = 0;
    Bytes rgb;
};

Picture parse_bmp24(const std::string& text) {
    const Bytes file(text.begin(), text.end());
    EXPECT_EQ(file.at(0), 'B');
    EXPECT_EQ(file.at(1), 'M');
    EXPECT_EQ(le(file, 2, 4), file.size());
    EXPECT_EQ(le(file, 14, 4), 40u);
    EXPECT_EQ(le(file, 28, 2), 24u);
    EXPECT_EQ(le(file, 30, 4), 0u);
    Picture picture{static_cast<int>(le(file, 18, 4)), static_cast<int>(le(file, 22, 4)), {}};
    const std::size_t row = (static_cast<std::size_t>(picture.width) * 3 + 3) / 4 * 4;
    const std::size_t data = le(file, 10, 4);
    EXPECT_EQ(file.size(), data + row * static_cast<std::size_t>(picture.height));
    for (int y = picture.height; y-- > 0;)
        for (int x = 0; x < picture.width; ++x) {
            const std::size_t at = data + static_cast<std::size_t>(y) * row + static_cast<std::size_t>(x) * 3;
            picture.rgb.insert(picture.rgb.end(), {file.at(at + 2), file.at(at + 1), file.at(at)});
        }
    return picture;
}

class GetInfoComponent : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_NE(get_bmp, nullptr) << QZ_TEST_GETINFO_FOLDER; }

    int decode(const Bytes& content, const std::string& name = "sfz.wlt", int mode = 2) {
        write_bytes(dir.path() / name, content);
        return get_bmp((dir.path() / name).string().c_str(), mode);
    }

    platform::Module component = platform::Module::load_from(QZ_TEST_GETINFO_FOLDER, "GetInfo.dll");
    GetBmp get_bmp = reinterpret_cast<GetBmp>(component.symbol("GetBmp"));
    TempDir dir;
};

TEST_F(GetInfoComponent, LosslessImageBecomesTheSamePixels) {
    ASSERT_EQ(decode(png()), 1);
    const Picture picture = parse_bmp24(file_text(dir.path() / "sfz.bmp"));
    EXPECT_EQ(picture.width, width);
    EXPECT_EQ(picture.height, height);
    EXPECT_EQ(picture.rgb, pixels);
}

TEST_F(GetInfoComponent, RefusalsWriteNoBmp) {
    struct Case {
        const char* what;
        Bytes content;
        std::string name;
        int mode;
        int value;
    };
    Bytes cut_png = png();
    cut_png.resize(cut_png.size() / 2);
    const std::vector<Case> cases{
        {"not a picture", {'W', 'L', 'T', 0, 1, 2, 3}, "sfz.wlt", 2, -4},
        {"an empty file", {}, "sfz.wlt", 2, -4},
        {"a cut PNG", cut_png, "sfz.wlt", 2, -4},
        {"another suffix", png(), "sfz.png", 2, -2},
        {"another mode", png(), "sfz.wlt", 1, -1},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(decode(c.content, c.name, c.mode), c.value) << c.what;
        EXPECT_FALSE(fs::exists(dir.path() / "sfz.bmp")) << c.what;
    }
    EXPECT_EQ(get_bmp((dir.path() / "missing.wlt").string().c_str(), 2), -3);
    EXPECT_EQ(get_bmp(nullptr, 2), -1);
}

}  // namespace
}  // namespace qz::test
