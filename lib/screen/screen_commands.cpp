#include "screen/screen_commands.h"

#include <algorithm>
#include <optional>

#include "link/status.h"

namespace qz::screen {
namespace {

constexpr std::uint8_t screen_class = 0xCD;
constexpr std::uint32_t block_read_ms = 2000;
constexpr std::uint32_t last_block_read_ms = 15000;
constexpr std::uint8_t max_rect_kind = 3;
constexpr std::uint16_t rect_colour_field = 0xFFFF;

}  // namespace

link::Payload screen_payload(Instruction instruction) {
    return link::Payload{screen_class, static_cast<std::uint8_t>(instruction), 0x00};
}

int send_screen_command(int icdev, const link::Payload& payload) {
    link::Reply<64> reply;
    return link::transact(icdev, payload, reply);
}

link::Payload picture_first_command(Instruction instruction, const PictureArea& area) {
    link::Payload payload = screen_payload(instruction);
    payload.add_be16(static_cast<std::uint16_t>(area.x)).add_be16(static_cast<std::uint16_t>(area.y));
    payload.add_be16(static_cast<std::uint16_t>(area.width)).add_be16(static_cast<std::uint16_t>(area.height));
    payload.add_be16(0).add_be16(static_cast<std::uint16_t>(area.content_length >> 16));
    return payload.add_be16(static_cast<std::uint16_t>(area.content_length));
}

int send_screen_blocks(int icdev, Instruction data_instruction, std::span<const std::uint8_t> content, bool paced) {
    for (std::size_t offset = 0; offset < content.size(); offset += block_size) {
        const std::size_t size = std::min(block_size, content.size() - offset);
        const bool last = offset + size == content.size();
        link::Payload payload = screen_payload(data_instruction);
        payload.add(content.subspan(offset, size));
        std::optional<link::TimeoutsForCommand> timeouts;
        if (paced) timeouts.emplace(last ? last_block_read_ms : block_read_ms, 0, block_read_ms, 0);
        if (const int result = send_screen_command(icdev, payload); result != 0) return result;
    }
    return 0;
}

int send_transfer(int icdev, const link::Payload& first, Instruction data_instruction,
                  std::span<const std::uint8_t> content, bool paced) {
    const int result = send_screen_command(icdev, first);
    return result != 0 ? result : send_screen_blocks(icdev, data_instruction, content, paced);
}

int clear_screen_rect(int icdev, int kind, int x, int y, int width, int height) {
    const bool fits = kind >= 0 && width >= 0 && height >= 0 && kind <= max_rect_kind && x >= 0 && x <= screen_width && y >= 0 &&
                      y <= screen_height && x + width <= screen_width && y + height <= screen_height;
    if (!fits) return link::status_bad_argument;
    link::Payload payload = screen_payload(Instruction::clear_rect);
    for (const int value : {x, y, width, height}) payload.add_be16(static_cast<std::uint16_t>(round_up_even(value)));
    payload.add_be16(rect_colour_field).add(static_cast<std::uint8_t>(kind));
    return send_screen_command(icdev, payload);
}

}  // namespace qz::screen
