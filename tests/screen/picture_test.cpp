// Pictures and monochrome boxes from real image files: the commands, the sizes
// and where pixels of known colours land.
#include "image_files.h"
#include "platform/image.h"
#include "qz_32.h"
#include "screen_fixture.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

constexpr Rgb red{255, 0, 0}, blue{0, 0, 255}, white{255, 255, 255}, black{0, 0, 0};

class Pictures : public ScreenTest {
protected:
    std::string image(int width, int height, const std::function<Rgb(int, int)>& colour,
                      ImageFormat format = ImageFormat::png) {
        const std::string path = (folder.path() / ("image" + std::to_string(++files))).string();
        write_image(path, format, width, height, colour);
        return path;
    }
    std::string plain(int width, int height) { return image(width, height, [](int, int) { return white; }); }

    // The colour words of the last picture sent, joined from its blocks.
    Bytes content() const {
        Bytes all;
        for (std::size_t i = 1; i < os.requests.size(); ++i) {
            const Bytes payload = payload_of(os.requests[i]);
            all.insert(all.end(), payload.begin() + 3, payload.end());
        }
        return all;
    }

    TempDir folder;
    int files = 0;
};

TEST_F(Pictures, ThreeByThreeAtOneOneBecomesFourByFourAtTwoTwo) {
    const auto path = image(3, 3, [](int x, int y) { return x == 0 && y == 0 ? red : x == 2 ? blue : white; });
    ASSERT_EQ(ShowPicInScreen(handle, path.c_str(), 1, 1, 0, 0), 0);
    ASSERT_EQ(os.requests.size(), 2u);
    EXPECT_EQ(payloads()[0], (Bytes{0xCD, 0x13, 0x00, 0, 2, 0, 2, 0, 4, 0, 4, 0, 0, 0, 0, 0, 0x20}));
    const Bytes words = content();
    ASSERT_EQ(words.size(), 32u);
    EXPECT_EQ(Bytes(words.begin(), words.begin() + 2), (Bytes{0x00, 0x1F}));  // top left stays red
    EXPECT_EQ(Bytes(words.begin() + 6, words.begin() + 8), (Bytes{0xF8, 0x00}));  // right column blue
    EXPECT_EQ(Bytes(words.end() - 2, words.end()), (Bytes{0xF8, 0x00}));
}

TEST_F(Pictures, EveryFormatPutsItsColoursInPlace) {
    // Odd sizes, scaled down by whole steps: each quarter is one colour.
    const auto quarters = [](int x, int y) { return x < 400 ? (y < 240 ? red : blue) : (y < 240 ? white : black); };
    for (const ImageFormat format : {ImageFormat::png, ImageFormat::bmp, ImageFormat::jpeg, ImageFormat::gif}) {
        os.requests.clear();
        const auto path = image(801, 481, [&](int x, int y) { return quarters(x * 800 / 801, y * 480 / 481); }, format);
        ASSERT_EQ(LoadPicInScreen(handle, 2, path.c_str(), 0, 0, 0, 0), 0);
        ASSERT_EQ(os.requests.size(), 189u);
        EXPECT_EQ(payloads()[0].size(), 18u);
        EXPECT_EQ(payloads()[0][17], 2);
        const Bytes words = content();
        ASSERT_EQ(words.size(), 768000u);
        const auto word = [&](int x, int y) { return (words[(y * 800 + x) * 2] << 8) | words[(y * 800 + x) * 2 + 1]; };
        EXPECT_EQ(word(100, 100), 0x001F) << static_cast<int>(format);
        EXPECT_EQ(word(100, 400), 0xF800) << static_cast<int>(format);
        EXPECT_EQ(word(700, 100), 0xFFFF) << static_cast<int>(format);
        EXPECT_EQ(word(700, 400), 0x0000) << static_cast<int>(format);
    }
}

TEST_F(Pictures, GreyAndTransparencyAreLaidOverWhite) {
    struct Case {
        int channels;
        Bytes file_pixels;
        Bytes rgb;
    };
    const std::vector<Case> cases{
        {1, {0, 100, 255}, {0, 0, 0, 100, 100, 100, 255, 255, 255}},
        {2, {100, 255, 100, 0, 0, 128}, {100, 100, 100, 255, 255, 255, 127, 127, 127}},
        {4, {200, 0, 10, 255, 200, 0, 10, 128, 1, 2, 3, 0}, {200, 0, 10, 227, 127, 132, 255, 255, 255}},
    };
    for (const Case& c : cases) {
        const std::string path = (folder.path() / ("row" + std::to_string(c.channels) + ".png")).string();
        write_png_row(path, c.channels, c.file_pixels);
        const auto decoded = platform::decode_image_file(path);
        ASSERT_TRUE(decoded) << c.channels;
        EXPECT_EQ(Bytes(decoded->rgb.begin(), decoded->rgb.end()), c.rgb) << c.channels << " channels";
    }
}

// A picture's blocks come back for the next picture, and growing one keeps its bytes.
TEST(PictureBlocks, ReusedAndGrownWithTheirBytes) {
    constexpr std::size_t mib = 1 << 20;
    constexpr std::size_t odd = mib + 12345;  // no other kept block has just this capacity
    void* first = platform::pixel_block_allocate(odd);
    ASSERT_NE(first, nullptr);
    platform::pixel_block_release(first);
    void* again = platform::pixel_block_allocate(odd);
    EXPECT_EQ(again, first) << "a kept block that fits is reused";
    EXPECT_EQ(platform::pixel_block_reallocate(again, mib), again) << "a shorter size fits the same block";

    auto* bytes = static_cast<std::uint8_t*>(again);
    for (std::size_t i = 0; i < mib; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7);
    auto* grown = static_cast<std::uint8_t*>(platform::pixel_block_reallocate(again, 3 * mib));
    ASSERT_NE(grown, nullptr);
    for (std::size_t i = 0; i < mib; ++i) ASSERT_EQ(grown[i], static_cast<std::uint8_t>(i * 7)) << i;
    platform::pixel_block_release(grown);
}

TEST_F(Pictures, FullScreenRules) {
    struct Case {
        std::function<int()> call;
        int result;
    };
    const std::vector<Case> cases{
        {[&] { return LoadPicInScreen(handle, 0, plain(1000, 600).c_str(), 0, 0, 0, 0); }, 0},
        {[&] { return LoadPicInScreen(handle, 0, plain(799, 479).c_str(), 0, 0, 0, 0); }, 0},
        {[&] { return LoadPicInScreen(handle, 0, plain(800, 478).c_str(), 0, 0, 0, 0); }, -19},
        {[&] { return LoadPicInScreen(handle, 0, plain(800, 480).c_str(), 2, 0, 0, 0); }, -19},
        {[&] { return ShowPicInScreen(handle, plain(800, 480).c_str(), 0, 0, 0, 0); }, 0},
        {[&] { return ShowPicInScreen(handle, plain(800, 480).c_str(), 2, 0, 0, 0); }, -19},
        {[&] { return ShowPicInScreen(handle, plain(2, 2).c_str(), 0, 481, 0, 0); }, -19},
        {[&] { return ShowPicInScreen(handle, (folder.path() / "missing.png").c_str(), 0, 0, 0, 0); }, -19},
        {[&] { return ShowPicInScreen(handle, nullptr, 0, 0, 0, 0); }, -19},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        os.requests.clear();
        EXPECT_EQ(cases[i].call(), cases[i].result) << i;
        EXPECT_EQ(os.requests.empty(), cases[i].result != 0) << i;
        if (cases[i].result == 0) {
            ASSERT_EQ(os.requests.size(), 189u) << i;
            EXPECT_EQ(payload_of(os.requests.back()).size(), 3u + 2048u);
        }
    }
}

TEST_F(Pictures, AFailedFirstCommandSendsNoBlock) {
    fail_at = 0;
    EXPECT_EQ(ShowPicInScreen(handle, plain(4, 4).c_str(), 0, 0, 0, 0), -0x6A80);
    EXPECT_EQ(os.requests.size(), 1u);
}

TEST_F(Pictures, MonochromeSendsTheBlackBoxOneBitAPixel) {
    // A 100 x 100 black square in a white image of odd size.
    const auto square = image(333, 211, [](int x, int y) { return x >= 50 && x < 150 && y >= 7 && y < 107 ? black : white; });
    ASSERT_EQ(ShowMonochromeInScreen(handle, square.c_str(), 1, 3, 0, 0), 0);
    EXPECT_EQ(payloads()[0], (Bytes{0xCD, 0x14, 0x00, 0, 2, 0, 4, 0, 100, 0, 100, 0, 0, 0, 0, 0x04, 0xE2}));
    EXPECT_EQ(content(), Bytes(1250, 0x00));

    // A 3 x 3 box: black corners, a dark grey, a light grey and a pixel of brightness 128 in it.
    os.requests.clear();
    const auto box = image(5, 5, [](int x, int y) {
        if ((x == 1 || x == 3) && (y == 1 || y == 3)) return black;
        if (x == 2 && y == 1) return Rgb{127, 127, 127};
        if (x == 1 && y == 2) return Rgb{128, 128, 128};
        return white;
    });
    ASSERT_EQ(ShowMonochromeInScreen(handle, box.c_str(), 0, 0, 0, 0), 0);
    const Bytes first = payloads()[0];
    EXPECT_EQ(Bytes(first.begin() + 7, first.end()), (Bytes{0, 3, 0, 3, 0, 0, 0, 0, 0, 2}));
    EXPECT_EQ(content(), (Bytes{0b00011101, 0b00000000}));
}

TEST_F(Pictures, MonochromeRefusals) {
    os.requests.clear();
    for (const std::string& path :
         {plain(10, 10), image(800, 10, [](int x, int y) { return (x == 0 || x == 799) && y > 0 && y < 9 ? black : white; })})
        EXPECT_EQ(ShowMonochromeInScreen(handle, path.c_str(), 2, 0, 0, 0), -19);
    EXPECT_TRUE(os.requests.empty());
}

}  // namespace
}  // namespace qz::test
