#include "bank/emv_commands.h"

#include <algorithm>
#include <vector>

#include "cards/card_commands.h"

namespace qz::bank {
namespace {

constexpr std::size_t select_apdu_capacity = 40;
constexpr std::uint8_t sw1_more_data = 0x61;
constexpr std::uint8_t sw1_wrong_length = 0x6C;

enum class OnWrongLength { keep, repeat };

std::vector<std::uint8_t> get_response_apdu(std::uint8_t le) { return {0x00, 0xC0, 0x00, 0x00, le}; }

StatusWord run(CardPath& path, std::vector<std::uint8_t> apdu, OnWrongLength on_wrong_length, WorkArea& reply) {
    std::fill_n(reply.bytes.begin(), 4, 0);
    for (int round = 0;; ++round) {
        if (path.exchange(apdu, reply) != 0 || reply.length < 2) return std::nullopt;
        const std::uint8_t first = reply.bytes[0];
        const std::uint8_t second = reply.bytes[1];
        const bool more_data = first == sw1_more_data;
        const bool repeat = on_wrong_length == OnWrongLength::repeat && first == sw1_wrong_length;
        if (round == cards::max_followed_rounds || !(more_data || repeat))
            return static_cast<std::uint16_t>(reply.bytes[reply.length - 2] << 8 | reply.bytes[reply.length - 1]);
        if (more_data) {
            apdu = get_response_apdu(second);
            on_wrong_length = OnWrongLength::keep;
        } else {
            apdu.back() = second;
        }
    }
}

}  // namespace

StatusWord select_by_name(CardPath& path, std::span<const std::uint8_t> name, WorkArea& reply) {
    constexpr std::size_t framing = 6;  // 00 A4 04 00 Lc .. 00
    if (name.size() > select_apdu_capacity - framing) return std::nullopt;
    std::vector<std::uint8_t> apdu{0x00, 0xA4, 0x04, 0x00, static_cast<std::uint8_t>(name.size())};
    apdu.insert(apdu.end(), name.begin(), name.end());
    apdu.push_back(0x00);
    return run(path, std::move(apdu), OnWrongLength::keep, reply);
}

StatusWord select_directory(CardPath& path, WorkArea& reply) {
    const std::string_view name = path.traits().directory;
    return select_by_name(path, {reinterpret_cast<const std::uint8_t*>(name.data()), name.size()}, reply);
}

StatusWord get_processing_options(CardPath& path, std::span<const std::uint8_t> pdol_answer, WorkArea& reply) {
    constexpr std::size_t framing = 8;  // 80 A8 00 00 Lc 83 n .. 00
    if (pdol_answer.size() > path.traits().gpo_apdu_capacity - framing) return std::nullopt;
    const auto n = static_cast<std::uint8_t>(pdol_answer.size());
    std::vector<std::uint8_t> apdu{0x80, 0xA8, 0x00, 0x00, static_cast<std::uint8_t>(n + 2), 0x83, n};
    apdu.insert(apdu.end(), pdol_answer.begin(), pdol_answer.end());
    apdu.push_back(0x00);
    return run(path, std::move(apdu), OnWrongLength::keep, reply);
}

StatusWord read_record(CardPath& path, std::uint8_t record, std::uint8_t p2, std::uint8_t le, WorkArea& reply) {
    return run(path, {0x00, 0xB2, record, p2, le}, OnWrongLength::repeat, reply);
}

}  // namespace qz::bank
