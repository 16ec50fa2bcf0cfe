// A session of the DLL with the simulated terminal over a Wine COM port: the
// port that QZ_32_WINDOWS_COM_PORT numbers (counted from 0, as open_device
// takes it) is mapped to qzsim's pseudo-terminal by scripts/windows.sh, which
// has qzsim write its screen to the PNG file that QZ_32_WINDOWS_SCREEN_PNG names.
#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_PNG
#include <stb/stb_image.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "qz_32.h"

namespace {

unsigned char mapped_port() {
    const char* value = std::getenv("QZ_32_WINDOWS_COM_PORT");
    return static_cast<unsigned char>(value != nullptr ? std::atoi(value) : 0);
}

class ComSession : public testing::Test {
protected:
    void SetUp() override {
        if (std::getenv("QZ_32_WINDOWS_COM_PORT") == nullptr) GTEST_SKIP() << "no COM port mapped to qzsim";
    }
};

TEST_F(ComSession, OpensAsksAndClosesOverTheComPort) {
    const int handle = open_device(mapped_port(), 115200);
    ASSERT_GT(handle, 1);

    unsigned char length = 0;
    unsigned char version[80] = {};
    ASSERT_EQ(get_version(handle, &length, version), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(version), length), "QZ-SIM V1.00");

    // A long reply: 200 bytes read one ReadFile at a time, written back and read again.
    unsigned char written[200];
    for (int i = 0; i < 200; ++i) written[i] = static_cast<unsigned char>(i * 7 + 3);
    ASSERT_EQ(dev_writeeeprom(handle, 0, 200, written), 0);
    unsigned char read_back[200] = {};
    ASSERT_EQ(dev_readeeprom(handle, 0, 200, read_back), 0);
    EXPECT_EQ(std::string(read_back, read_back + 200), std::string(written, written + 200));

    EXPECT_EQ(dev_beep(handle, 1, 1, 1), 0);
    EXPECT_EQ(close_device(handle), 0);
    EXPECT_EQ(close_device(handle), -1);
}

// The count of dark pixels of the simulated screen inside and outside a box.
struct DarkPixels {
    int inside = 0;
    int outside = 0;
};

DarkPixels dark_pixels(const char* png, int left, int top, int right, int bottom) {
    int width = 0;
    int height = 0;
    int channels = 0;
    const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> rgb(stbi_load(png, &width, &height, &channels, 3),
                                                                  stbi_image_free);
    EXPECT_NE(rgb, nullptr) << png;
    DarkPixels counted;
    for (int y = 0; rgb && y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const stbi_uc* pixel = rgb.get() + (y * width + x) * 3;
            if (pixel[0] + pixel[1] + pixel[2] >= 3 * 128) continue;
            const bool inside = x >= left && x < right && y >= top && y < bottom;
            ++(inside ? counted.inside : counted.outside);
        }
    return counted;
}

// Text goes through FontMaker.dll beside the DLL: black glyphs on a white screen
// show up in the box of the two full-width characters, and nowhere else.
TEST_F(ComSession, TextIsDrawnWithTheFontComponent) {
    const char* png = std::getenv("QZ_32_WINDOWS_SCREEN_PNG");
    if (png == nullptr) GTEST_SKIP() << "qzsim writes no screen";
    const int handle = open_device(mapped_port(), 115200);
    ASSERT_GT(handle, 1);
    ASSERT_EQ(SetFullScreenColor(handle, "255,255,255"), 0);
    ASSERT_EQ(ShowTextInScreen(handle, "\xC4\xE3\xBA\xC3", 36, "0,0,0", "255,255,255", 100, 60, 1, 0), 0);
    EXPECT_EQ(close_device(handle), 0);
    const DarkPixels dark = dark_pixels(png, 100, 60, 172, 96);
    EXPECT_GT(dark.inside, 100);
    EXPECT_EQ(dark.outside, 0);
}

TEST_F(ComSession, MissingAndOutOfRangePortsGiveTheirStatuses) {
    EXPECT_EQ(open_device(29, 9600), -21);  // COM30: nothing behind it
    EXPECT_EQ(open_device(32, 9600), -19);
}

}  // namespace
