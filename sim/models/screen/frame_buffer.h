// What the colour screen shows, or one of its stored pages: 800 x 480 colour
// words of 5-6-5 bits, blue in the top five and red in the bottom five.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace qz::sim {

inline constexpr int screen_width = 800;
inline constexpr int screen_height = 480;
inline constexpr std::uint16_t white_word = 0xFFFF;

class FrameBuffer {
public:
    FrameBuffer() : pixels_(static_cast<std::size_t>(screen_width) * screen_height, white_word) {}

    std::uint16_t at(int x, int y) const { return pixels_[index(x, y)]; }
    // Pixels outside the screen are dropped.
    void set(int x, int y, std::uint16_t word) {
        if (x >= 0 && x < screen_width && y >= 0 && y < screen_height) pixels_[index(x, y)] = word;
    }
    void fill(std::uint16_t word) { pixels_.assign(pixels_.size(), word); }
    void fill_rect(int x, int y, int width, int height, std::uint16_t word);

    // Red, green, blue bytes of every pixel, row by row, each component widened
    // from its 5 or 6 bits.
    std::vector<std::uint8_t> rgb() const;
    // Writes the picture as PNG; false if the file cannot be written.
    bool save_png(const std::filesystem::path& path) const;

    bool operator==(const FrameBuffer&) const = default;

private:
    static std::size_t index(int x, int y) { return static_cast<std::size_t>(y) * screen_width + x; }
    std::vector<std::uint16_t> pixels_;
};

}  // namespace qz::sim
