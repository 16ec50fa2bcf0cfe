// The line LCD (class 0x00, four instructions and a fifth): 4 lines of 16
// columns, each cell 8 x 16 pixels.
//
//   0C 00 00 line column cells...  cells of 16 bytes from that column on: bytes
//                                  0..7 are pixel columns of rows 0..7, 8..15 of
//                                  rows 8..15, the top row in bit 7; cells past
//                                  the last column are dropped
//   10 00 00 line column text...   GBK text, drawn here from the LCD's raster tables
//   0D 00                          clear
//   11 00 level                    brightness 0 or 1
//   12 00 delay                    backlight delay
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sim/core/terminal.h"

namespace qz::sim {

inline constexpr int lcd_lines = 4;
inline constexpr int lcd_columns = 16;
inline constexpr int lcd_width = lcd_columns * 8;
inline constexpr int lcd_height = lcd_lines * 16;

class LcdModel final : public DeviceModel {
public:
    std::vector<Route> routes() const override;
    Reply handle(const Command& command) override;

    bool lit(int x, int y) const { return pixels_[static_cast<std::size_t>(y * lcd_width + x)]; }
    std::optional<std::uint8_t> brightness() const { return brightness_; }
    std::optional<std::uint8_t> backlight_delay() const { return backlight_delay_; }

    // The pixels as text: one line of '#' (lit) and '.' a pixel row.
    std::string as_text() const;
    // The pixels as RGB bytes, lit pixels dark on a light green ground.
    std::vector<std::uint8_t> rgb() const;

    // Adds a listener, called after every command that changed what the LCD shows.
    void on_change(std::function<void(const LcdModel&)> listener) { listeners_.push_back(std::move(listener)); }

private:
    Reply cells(std::span<const std::uint8_t> body);
    Reply text(std::span<const std::uint8_t> body);
    Reply changed();
    void put_cell(int line, int column, std::span<const std::uint8_t> cell);

    std::array<bool, lcd_width * lcd_height> pixels_{};
    std::optional<std::uint8_t> brightness_;
    std::optional<std::uint8_t> backlight_delay_;
    std::vector<std::function<void(const LcdModel&)>> listeners_;
};

}  // namespace qz::sim
