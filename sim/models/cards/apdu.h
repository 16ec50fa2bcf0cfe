// Command and response APDUs as a smart card sees them (short form only).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qz::sim {

// Status words a card answers, ISO 7816-4.
namespace card_sw {
inline constexpr std::uint16_t success = 0x9000;
inline constexpr std::uint16_t more_data = 0x6100;  // | bytes available
inline constexpr std::uint16_t wrong_length = 0x6700;
inline constexpr std::uint16_t conditions_not_satisfied = 0x6985;
inline constexpr std::uint16_t incorrect_data = 0x6A80;
inline constexpr std::uint16_t file_not_found = 0x6A82;
inline constexpr std::uint16_t record_not_found = 0x6A83;
inline constexpr std::uint16_t incorrect_p1_p2 = 0x6A86;
inline constexpr std::uint16_t wrong_le = 0x6C00;  // | exact length
inline constexpr std::uint16_t instruction_not_supported = 0x6D00;
inline constexpr std::uint16_t class_not_supported = 0x6E00;
}  // namespace card_sw

// The longest response data of one short APDU.
inline constexpr std::size_t max_short_response = 256;

struct Apdu {
    std::uint8_t cla = 0;
    std::uint8_t ins = 0;
    std::uint8_t p1 = 0;
    std::uint8_t p2 = 0;
    std::vector<std::uint8_t> data;  // command data (Lc bytes)
    std::optional<std::size_t> le;   // expected length, 00 read as 256; nothing when absent

    bool has_data() const { return !data.empty(); }
    // P1 and P2 as one number, P1 high.
    std::uint16_t p1_p2() const { return static_cast<std::uint16_t>(p1 << 8 | p2); }
};

// Splits a short command APDU into its cases (1: header, 2: header Le,
// 3: header Lc data, 4: header Lc data Le); nothing when the lengths disagree.
std::optional<Apdu> parse_apdu(std::span<const std::uint8_t> bytes);

// What a card's application answers to one command, before the rules of the
// transmission decide how much of the data goes back at once.
struct CardResponse {
    std::vector<std::uint8_t> data;
    std::uint16_t sw = card_sw::success;

    static CardResponse status(std::uint16_t sw) { return {{}, sw}; }
};

// Response data followed by the two status bytes.
std::vector<std::uint8_t> response_bytes(std::span<const std::uint8_t> data, std::uint16_t sw);

}  // namespace qz::sim
