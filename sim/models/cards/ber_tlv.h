// BER-TLV as a card stores it: data objects built from the scenario, and the
// data object lists (DOL) by which a card asks the terminal for data.
//
// In a scenario a list of data objects is a JSON list of one-key objects, the key
// the tag in hexadecimal, the value bytes (a text or {"hex": ...}) or, for a
// constructed tag, again such a list:
//
//   [ {"5A": {"hex": "62 22 02 12 34 56 78 90 12 3F"}}, {"5F20": "ZHANG/SAN"},
//     {"A5": [ {"50": "DEBIT"} ]} ]
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qz::sim {

// One data object: the tag's bytes, the length in the shortest BER form, the value.
std::vector<std::uint8_t> tlv(std::span<const std::uint8_t> tag, std::span<const std::uint8_t> value);
// The same for a tag of one or two bytes written as a number (0x5A, 0x5F20).
std::vector<std::uint8_t> tlv(std::uint16_t tag, std::span<const std::uint8_t> value);

// The tag written in hexadecimal ("9F38"), checked to be one whole BER tag.
std::vector<std::uint8_t> parse_tag(std::string_view text, const std::string& where);

// The data objects of a JSON list as above, one after the other.
std::vector<std::uint8_t> tlv_list(const nlohmann::json& list, const std::string& where);

// The value of the first data object with `tag` (its bytes as one number: 0x5A,
// 0x9F38), searching constructed objects depth-first; nothing when there is none
// or the data is cut short before it.
std::optional<std::vector<std::uint8_t>> find_tlv(std::span<const std::uint8_t> data, std::uint32_t tag);

// The sum of the lengths a DOL asks for; nothing when the list is cut short.
std::optional<std::size_t> dol_length(std::span<const std::uint8_t> dol);

}  // namespace qz::sim
