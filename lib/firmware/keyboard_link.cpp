#include "firmware/keyboard_link.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "link/command.h"

namespace qz::firmware {
namespace {

constexpr std::uint8_t pass_class = 0xC5;
constexpr std::uint8_t pass_instruction = 0x0F;
constexpr std::uint8_t esc = 0x1B;
constexpr std::uint8_t stx = 0x02;
constexpr std::uint8_t etx = 0x03;
constexpr std::uint8_t package_kind = 0xD0;
constexpr std::string_view version_order = "KTLVN";
constexpr std::string_view loader_order = "UPDATE";
constexpr std::string_view loader_mark = "IAP";
constexpr std::array<std::uint8_t, 8> loader_version_frame{0x02, 0x00, 0x03, 0x00, 0x01, 0x00, 0x01, 0x03};
// The loader's version reply: STX, length, three bytes, the text, then eight
// bytes that the length counts besides the text.
constexpr std::size_t loader_text_offset = 6;
constexpr std::size_t loader_length_extra = 8;
// Bytes 3 and 4 of a package reply hold the inner status.
constexpr std::size_t inner_status_offset = 3;

using VersionReply = link::Reply<256>;
using PackageReply = link::Reply<512>;

link::Payload keyboard_message(std::span<const std::uint8_t> message) {
    link::Payload payload{pass_class, pass_instruction, 0x00};
    payload.add(message);
    return payload;
}

link::Payload order(std::string_view letters) {
    link::Payload payload{pass_class, pass_instruction, 0x00, esc};
    payload.add(std::span(reinterpret_cast<const std::uint8_t*>(letters.data()), letters.size()));
    return payload;
}

// The reply data without their first and last byte.
template <std::size_t Capacity>
int inner_text(int result, const link::Reply<Capacity>& reply, VersionText& text) {
    result = reply.require(result, 2);
    if (result == 0) text.assign(reply.data().begin() + 1, reply.data().end() - 1);
    return result;
}

std::uint8_t xor_checksum(std::span<const std::uint8_t> bytes) {
    std::uint8_t sum = 0;
    for (std::uint8_t byte : bytes) sum ^= byte;
    return sum;
}

}  // namespace

std::vector<std::uint8_t> inner_frame(std::span<const std::uint8_t> payload) {
    std::vector<std::uint8_t> frame{stx, static_cast<std::uint8_t>(payload.size() >> 8),
                                    static_cast<std::uint8_t>(payload.size())};
    frame.insert(frame.end(), payload.begin(), payload.end());
    frame.push_back(xor_checksum(payload));
    frame.push_back(etx);
    return frame;
}

int keyboard_version(int icdev, VersionText& text) {
    link::Reply<100> reply;
    return inner_text(link::transact(icdev, order(version_order), reply), reply, text);
}

int iap_version(int icdev, VersionText& text) {
    VersionReply reply;
    const int result = link::transact(icdev, keyboard_message(loader_version_frame), reply);
    const auto data = reply.data();
    if (result != 0 || data.size() < 2 || data[0] != stx || data[1] != 0x00) return inner_text(result, reply, text);
    if (data.size() < 3 || data[2] < loader_length_extra) return link::status_reply_too_short;
    const std::size_t length = data[2] - loader_length_extra;
    if (data.size() < loader_text_offset + length) return link::status_reply_too_short;
    text.assign(data.begin() + loader_text_offset, data.begin() + loader_text_offset + length);
    return 0;
}

void enter_iap(int icdev) {
    VersionReply reply;
    link::transact(icdev, order(loader_order), reply);
}

bool is_iap_version(VersionText& text) {
    for (std::uint8_t& byte : text) byte = static_cast<std::uint8_t>(std::toupper(byte));
    return std::search(text.begin(), text.end(), loader_mark.begin(), loader_mark.end()) != text.end();
}

int download_iap(int icdev, unsigned number, std::span<const std::uint8_t> data) {
    std::vector<std::uint8_t> inner{0x00, package_kind, static_cast<std::uint8_t>(number)};
    inner.insert(inner.end(), data.begin(), data.end());
    const link::Payload message = keyboard_message(inner_frame(inner));

    const auto inner_status = [](const PackageReply& reply) {
        return (reply.area[inner_status_offset] << 8) | reply.area[inner_status_offset + 1];
    };
    PackageReply reply;
    const int result = reply.require(link::transact(icdev, message, reply), inner_status_offset + 2);
    if (result != 0) return result;
    int status = inner_status(reply);
    if (status == 0) return 0;
    PackageReply repeat;
    if (repeat.require(link::transact(icdev, message, repeat), inner_status_offset + 2) == 0)
        status = inner_status(repeat);
    return status;
}

}  // namespace qz::firmware
