#include "sim/models/screen/screen_model.h"

#include "sim/core/json_values.h"
#include "sim/core/status.h"
#include "sim/models/screen/painting.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t screen_class = 0xCD;
constexpr std::uint8_t fill_instruction = 0x01;
constexpr std::uint8_t clear_instruction = 0x04;
constexpr std::uint8_t clear_rect_instruction = 0x05;
constexpr std::uint8_t activate_instruction = 0x06;
constexpr std::uint8_t text_instruction = 0x10;
constexpr std::uint8_t picture_instruction = 0x13;
constexpr std::uint8_t monochrome_instruction = 0x14;
constexpr std::uint8_t store_page_instruction = 0x16;
constexpr std::uint8_t store_screen_instruction = 0x17;
constexpr std::uint8_t data_offset = 0x10;  // a data command is its first command + 0x10
constexpr std::uint8_t sleep_instruction = 0x30;
constexpr std::uint8_t vendor_instruction = 0x31;
constexpr std::size_t text_head = 19;       // body bytes before the width classes
constexpr std::size_t picture_head = 15;    // body bytes of a picture's first command

Reply ok(std::vector<std::uint8_t> data = {}) { return {status::ok, std::move(data)}; }

std::uint16_t be16(std::span<const std::uint8_t> body, std::size_t at) {
    return static_cast<std::uint16_t>((body[at] << 8) | body[at + 1]);
}

std::uint32_t be32(std::span<const std::uint8_t> body, std::size_t at) {
    return (std::uint32_t{be16(body, at)} << 16) | be16(body, at + 2);
}

bool on_screen(const Area& area) {
    return area.width >= 0 && area.height >= 0 && area.x + area.width <= screen_width &&
           area.y + area.height <= screen_height;
}

Area area_at(std::span<const std::uint8_t> body) {
    return {be16(body, 1), be16(body, 3), be16(body, 5), be16(body, 7)};
}

}  // namespace

ScreenConfig parse_screen(const nlohmann::json& document) {
    ScreenConfig config;
    if (!document.contains("screen")) return config;
    const auto& section = json_object(document["screen"], {"vendor"}, "screen");
    if (section.contains("vendor"))
        config.vendor = static_cast<std::uint8_t>(json_number(section["vendor"], 0xFF, "screen.vendor"));
    return config;
}

std::vector<Route> ScreenModel::routes() const {
    return {Route{screen_class, {}}.named(
        "screen", {{fill_instruction, "fill"},
                   {clear_instruction, "clear"},
                   {clear_rect_instruction, "clear area"},
                   {activate_instruction, "show page"},
                   {text_instruction, "text"},
                   {picture_instruction, "picture"},
                   {monochrome_instruction, "monochrome picture"},
                   {store_page_instruction, "store page"},
                   {store_screen_instruction, "store screen"},
                   {text_instruction + data_offset, "text data"},
                   {picture_instruction + data_offset, "picture data"},
                   {monochrome_instruction + data_offset, "monochrome data"},
                   {store_page_instruction + data_offset, "page data"},
                   {store_screen_instruction + data_offset, "screen data"},
                   {sleep_instruction, "auto sleep"},
                   {vendor_instruction, "vendor"}})};
}

Reply ScreenModel::handle(const Command& command) {
    const auto body = command.body();
    if (body.empty()) return Reply::failure(status::wrong_length);
    switch (const std::uint8_t instruction = command.instruction()) {
        case fill_instruction: return fill(body);
        case clear_instruction: return clear(body);
        case clear_rect_instruction: return clear_rect(body);
        case activate_instruction: return activate(body);
        case sleep_instruction: return sleep(body);
        case vendor_instruction: return vendor(body);
        case text_instruction: return text_first(body);
        case picture_instruction:
        case monochrome_instruction:
        case store_page_instruction:
        case store_screen_instruction: return picture_first(instruction, body);
        case text_instruction + data_offset:
        case picture_instruction + data_offset:
        case monochrome_instruction + data_offset:
        case store_page_instruction + data_offset:
        case store_screen_instruction + data_offset: return data(instruction, body);
        default: return Reply::failure(status::instruction_unknown);
    }
}

Reply ScreenModel::changed() {
    for (const auto& listener : listeners_) listener(visible_);
    return ok();
}

Reply ScreenModel::fill(std::span<const std::uint8_t> body) {
    if (body.size() != 3) return Reply::failure(status::wrong_length);
    visible_.fill(be16(body, 1));
    return changed();
}

Reply ScreenModel::clear(std::span<const std::uint8_t> body) {
    if (body.size() != 6) return Reply::failure(status::wrong_length);
    visible_.fill(be16(body, 1));
    return changed();
}

Reply ScreenModel::clear_rect(std::span<const std::uint8_t> body) {
    if (body.size() != 12) return Reply::failure(status::wrong_length);
    const Area area = area_at(body);
    if (!on_screen(area) || body[11] > 3) return Reply::failure(status::out_of_range);
    visible_.fill_rect(area.x, area.y, area.width, area.height, be16(body, 9));
    return changed();
}

Reply ScreenModel::activate(std::span<const std::uint8_t> body) {
    if (body.size() != 2) return Reply::failure(status::wrong_length);
    if (body[1] >= stored_pages) return Reply::failure(status::out_of_range);
    shown_page_ = body[1];
    visible_ = pages_[shown_page_];
    return changed();
}

Reply ScreenModel::sleep(std::span<const std::uint8_t> body) {
    if (body.size() != 3) return Reply::failure(status::wrong_length);
    sleep_time_ = be16(body, 1);
    return ok();
}

Reply ScreenModel::vendor(std::span<const std::uint8_t> body) {
    if (body.size() == 2 && body[1] == 0x00) return ok({vendor_});
    if (body.size() != 3 || body[1] != 0x01) return Reply::failure(status::wrong_length);
    vendor_ = body[2];
    return ok();
}

Reply ScreenModel::text_first(std::span<const std::uint8_t> body) {
    if (body.size() < text_head || body.size() != text_head + body[1]) return Reply::failure(status::wrong_length);
    TextLine line{be16(body, 7), be16(body, 9), body[2], be16(body, 3), be16(body, 5),
                  {body.begin() + text_head, body.end()}};
    for (const std::uint8_t width_class : line.width_classes)
        if (width_class != 1 && width_class != 2) return Reply::failure(status::wrong_data);
    if (line.glyph_height == 0) return Reply::failure(status::wrong_data);
    const std::size_t length = be32(body, 13);
    if (length != line.width_classes.size() * glyph_bytes(line.glyph_height))
        return Reply::failure(status::wrong_length);
    return open(text_instruction + data_offset, length,
                [this, line](std::span<const std::uint8_t> bits) { paint_text(visible_, line, bits); });
}

Reply ScreenModel::picture_first(std::uint8_t instruction, std::span<const std::uint8_t> body) {
    const bool paged = instruction == store_page_instruction;
    if (body.size() != picture_head + (paged ? 1 : 0)) return Reply::failure(status::wrong_length);
    const Area area = area_at(body);
    const std::size_t length = be32(body, 11);
    if (!on_screen(area)) return Reply::failure(status::out_of_range);
    const auto pixels = static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height);
    const bool monochrome = instruction == monochrome_instruction;
    if (length != (monochrome ? (pixels + 7) / 8 : pixels * 2)) return Reply::failure(status::wrong_length);
    const bool full_screen = area.x == 0 && area.y == 0 && area.width == screen_width && area.height == screen_height;
    const auto data_instruction = static_cast<std::uint8_t>(instruction + data_offset);

    switch (instruction) {
        case monochrome_instruction:
            return open(data_instruction, length,
                        [this, area](std::span<const std::uint8_t> bits) { paint_monochrome(visible_, area, bits); });
        case picture_instruction:
            return open(data_instruction, length,
                        [this, area](std::span<const std::uint8_t> words) { paint_picture(visible_, area, words); });
        default: {
            if (!full_screen) return Reply::failure(status::out_of_range);
            const std::size_t page = paged ? body[picture_head] : 0;
            if (page >= stored_pages) return Reply::failure(status::out_of_range);
            return open(data_instruction, length, [this, area, page](std::span<const std::uint8_t> words) {
                paint_picture(pages_[page], area, words);
                if (page == 0) visible_ = pages_[0];
            });
        }
    }
}

Reply ScreenModel::open(std::uint8_t data_instruction, std::size_t length, Painter paint) {
    transfer_.reset();
    if (length == 0) {
        paint({});
        return changed();
    }
    transfer_ = Transfer{data_instruction, length, {}, std::move(paint)};
    transfer_->content.reserve(length);
    return ok();
}

Reply ScreenModel::data(std::uint8_t instruction, std::span<const std::uint8_t> body) {
    const auto block = body.subspan(1);
    if (!transfer_ || transfer_->data_instruction != instruction || block.empty() ||
        block.size() > transfer_->length - transfer_->content.size()) {
        transfer_.reset();
        return Reply::failure(status::out_of_sequence);
    }
    transfer_->content.insert(transfer_->content.end(), block.begin(), block.end());
    if (transfer_->content.size() < transfer_->length) return ok();
    const Transfer finished = std::move(*transfer_);
    transfer_.reset();
    finished.paint(finished.content);
    return changed();
}

}  // namespace qz::sim
