#include "sim/models/cards/apdu.h"

namespace qz::sim {
namespace {

constexpr std::size_t header_length = 4;

std::size_t expected_length(std::uint8_t le) { return le == 0 ? max_short_response : le; }

}  // namespace

std::optional<Apdu> parse_apdu(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < header_length) return std::nullopt;
    Apdu apdu{bytes[0], bytes[1], bytes[2], bytes[3], {}, std::nullopt};
    const auto body = bytes.subspan(header_length);
    if (body.empty()) return apdu;
    if (body.size() == 1) {
        apdu.le = expected_length(body[0]);
        return apdu;
    }
    const std::size_t lc = body[0];
    if (lc == 0) return std::nullopt;  // an extended length, which these cards do not take
    if (body.size() == 1 + lc + 1)
        apdu.le = expected_length(body.back());
    else if (body.size() != 1 + lc)
        return std::nullopt;
    apdu.data.assign(body.begin() + 1, body.begin() + 1 + static_cast<std::ptrdiff_t>(lc));
    return apdu;
}

std::vector<std::uint8_t> response_bytes(std::span<const std::uint8_t> data, std::uint16_t sw) {
    std::vector<std::uint8_t> bytes(data.begin(), data.end());
    bytes.push_back(static_cast<std::uint8_t>(sw >> 8));
    bytes.push_back(static_cast<std::uint8_t>(sw));
    return bytes;
}

}  // namespace qz::sim
