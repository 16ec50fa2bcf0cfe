#include "firmware/scanner_loader.h"

#include <array>
#include <string_view>

#include "firmware/crc16.h"
#include "link/command.h"
#include "platform/platform.h"

namespace qz::firmware {
namespace {

constexpr std::uint8_t package_parameter = 0x02;
constexpr std::uint8_t yes = '$';

// Ten bytes whose last two are the two's complement of the sum of the first eight.
constexpr std::array<std::uint8_t, 10> switch_content{0x08, 0xC6, 0x04, 0x08, 0x00, 0xF2, 0xFC, 0x00, 0xFD, 0x38};
constexpr std::array<std::uint8_t, 1> poll_content{0x21};
constexpr std::string_view leave_content = "#exit#";
// The leave message's length field counts two bytes more than follow it.
constexpr std::uint16_t leave_length_field = 8;

using LoaderReply = link::Reply<512>;

std::span<const std::uint8_t> bytes_of(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

link::Payload loader_message_with_length(std::span<const std::uint8_t> content, std::uint16_t length_field,
                                         std::uint8_t parameter = 0x00) {
    link::Payload payload{pass_class, pass_instruction, parameter, esc, scanner_mark, loader_order};
    payload.add_be16(length_field).add(content);
    return payload;
}

link::Payload loader_message(std::span<const std::uint8_t> content, std::uint8_t parameter = 0x00) {
    return loader_message_with_length(content, static_cast<std::uint16_t>(content.size()), parameter);
}

bool said_yes(const LoaderReply& reply) { return reply.data().size() >= 2 && reply.area[1] == yes; }

struct PreparingStep {
    std::vector<std::uint8_t> content;
    bool wants_text;  // a text of at least 4 bytes rather than '$'
    int refusal;
};

const std::array<PreparingStep, 5> preparing_steps{{
    {{0x34}, false, -0x34},
    {{0x03}, false, -0x03},
    {{'#', 'v', 'e', 'r', '#'}, true, -'#'},
    {{0x01}, false, -0x01},
    {{0x00, 0x23, 0xB5, 0x00}, false, -0xB5},
}};
constexpr std::size_t loader_text_minimum = 4;

}  // namespace

int scanner_version(int icdev, std::vector<std::uint8_t>& text) {
    const link::TimeoutsForCommand timeouts(5000, 0);
    link::Reply<256> reply;
    const int result = link::transact(icdev, link::Payload{pass_class, pass_instruction, 0x00, esc, scanner_mark,
                                                           version_order},
                                      reply);
    if (result == 0 && reply.data().size() >= 3) text.assign(reply.data().begin() + 1, reply.data().end() - 1);
    return result;
}

bool enter_scanner_loader(int icdev, std::uint32_t limit_ms) {
    auto& os = platform::current();
    LoaderReply ignored;
    link::transact(icdev, loader_message(switch_content), ignored);
    os.sleep_ms(wait_after_switch_ms);
    const std::uint32_t start = os.tick_ms();
    for (;;) {
        LoaderReply reply;
        if (link::transact(icdev, loader_message(poll_content), reply) == 0 && said_yes(reply)) return true;
        if (os.tick_ms() - start >= limit_ms) return false;
        os.sleep_ms(wait_between_polls_ms);
    }
}

int prepare_scanner_upgrade(int icdev) {
    for (const PreparingStep& step : preparing_steps) {
        if (&step != &preparing_steps.front()) platform::current().sleep_ms(wait_between_preparing_ms);
        LoaderReply reply;
        if (const int result = link::transact(icdev, loader_message(step.content), reply); result != 0) return result;
        const bool answered = step.wants_text ? reply.data().size() >= loader_text_minimum : said_yes(reply);
        if (!answered) return step.refusal;
    }
    return 0;
}

int download_scaner_upgrade_data(int icdev, std::span<const std::uint8_t> package) {
    const std::uint16_t crc = crc16_packet(package);
    std::vector<std::uint8_t> content(package.begin(), package.end());
    content.push_back(static_cast<std::uint8_t>(crc >> 8));
    content.push_back(static_cast<std::uint8_t>(crc));
    LoaderReply reply;
    const int result = link::transact(icdev, loader_message(content, package_parameter), reply);
    if (result == 0 && reply.data().size() > 2 && reply.area[1] != yes) return status_package_refused;
    return result;
}

int leave_scanner_loader(int icdev) {
    LoaderReply reply;
    return link::transact(icdev, loader_message_with_length(bytes_of(leave_content), leave_length_field), reply);
}

}  // namespace qz::firmware
