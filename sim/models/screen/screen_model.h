// The colour screen (class 0xCD): a frame buffer of 800 x 480 colour words, five
// stored pages, an auto sleep time and a vendor byte.
//
//   01 fill with a colour word          04 clear to a colour word (all)
//   05 clear a rectangle                06 show a stored page
//   10/20 text: glyph bits painted in a foreground and a background word
//   13/23 picture: colour words         14/24 monochrome: one bit a pixel
//   17/27 a full-screen picture shown and kept as page 0
//   16/26 a full-screen picture kept in page 1..4 (not shown)
//   30 auto sleep time                  31 vendor byte: 00 read, 01 vv write
//
// A first command (1x) says where the content goes and how many bytes it has;
// the data commands (2x) that follow carry them in order, and the content is
// painted when the last byte has come. A new first command drops a transfer
// left unfinished.
//
// Text content: for each glyph of height S, S rows of P / 8 bytes (P is S raised
// to a multiple of 8), the leftmost pixel in the top bit; a full-width glyph uses
// S columns, a half-width one S / 2. A set bit takes the foreground word.
// Monochrome content: the box's pixels row by row, top bit first, no padding
// between rows; a set bit is light (white), a clear one black.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include <nlohmann/json.hpp>

#include "sim/core/terminal.h"
#include "sim/models/screen/frame_buffer.h"

namespace qz::sim {

inline constexpr std::size_t stored_pages = 5;

struct ScreenConfig {
    std::uint8_t vendor = 0x01;
};

// The "screen" section of a scenario: {"vendor": byte}.
ScreenConfig parse_screen(const nlohmann::json& document);

class ScreenModel final : public DeviceModel {
public:
    explicit ScreenModel(ScreenConfig config = {}) : vendor_(config.vendor) {}

    std::vector<Route> routes() const override;
    Reply handle(const Command& command) override;

    const FrameBuffer& visible() const { return visible_; }
    const FrameBuffer& page(std::size_t number) const { return pages_.at(number); }
    std::size_t shown_page() const { return shown_page_; }
    std::optional<std::uint16_t> sleep_time() const { return sleep_time_; }
    std::uint8_t vendor() const { return vendor_; }

    // Adds a listener, called after every command that changed what the screen shows.
    void on_change(std::function<void(const FrameBuffer&)> listener) { listeners_.push_back(std::move(listener)); }

private:
    // Paints or stores the content of a finished transfer.
    using Painter = std::function<void(std::span<const std::uint8_t>)>;
    struct Transfer {
        std::uint8_t data_instruction = 0;
        std::size_t length = 0;
        std::vector<std::uint8_t> content;
        Painter paint;
    };

    Reply fill(std::span<const std::uint8_t> body);
    Reply clear(std::span<const std::uint8_t> body);
    Reply clear_rect(std::span<const std::uint8_t> body);
    Reply activate(std::span<const std::uint8_t> body);
    Reply sleep(std::span<const std::uint8_t> body);
    Reply vendor(std::span<const std::uint8_t> body);
    Reply text_first(std::span<const std::uint8_t> body);
    Reply picture_first(std::uint8_t instruction, std::span<const std::uint8_t> body);
    Reply data(std::uint8_t instruction, std::span<const std::uint8_t> body);

    // Opens a transfer; a zero length paints at once.
    Reply open(std::uint8_t data_instruction, std::size_t length, Painter paint);
    Reply changed();

    FrameBuffer visible_;
    std::array<FrameBuffer, stored_pages> pages_;
    std::size_t shown_page_ = 0;
    std::optional<std::uint16_t> sleep_time_;
    std::uint8_t vendor_;
    std::optional<Transfer> transfer_;
    std::vector<std::function<void(const FrameBuffer&)>> listeners_;
};

}  // namespace qz::sim
