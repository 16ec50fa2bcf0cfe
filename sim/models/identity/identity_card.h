// An identity card as the identity module reads it: a text block of UCS-2 fields
// (little-endian, padded with blanks) at the fixed offsets of its record kind,
// the photo and the finger data.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace qz::sim {

inline constexpr std::size_t id_text_block_size = 256;

enum class RecordKind { ordinary, foreign };

struct IdentityCard {
    RecordKind kind = RecordKind::ordinary;
    std::array<std::uint8_t, id_text_block_size> text{};
    std::vector<std::uint8_t> photo;   // image bytes as the module hands them on
    std::vector<std::uint8_t> finger;  // sent only by the read with finger data
};

// A field of a record kind: its key in the scenario, where it lies and how many bytes it takes.
struct FieldPlace {
    std::string_view key;
    std::size_t offset;
    std::size_t bytes;
};

// The resident identity card.
inline constexpr std::array<FieldPlace, 10> ordinary_fields{{
    {"name", 0, 30}, {"gender", 30, 2}, {"ethnic", 32, 4}, {"birth", 36, 16},
    {"address", 52, 70}, {"id_number", 122, 36}, {"issuer", 158, 30},
    {"valid_from", 188, 16}, {"valid_until", 204, 16}, {"reserved", 220, 36},
}};

// The foreigner's permanent residence card; its card type field always holds "I".
inline constexpr std::array<FieldPlace, 11> foreign_fields{{
    {"name_latin", 0, 120}, {"gender", 120, 2}, {"card_number", 122, 30}, {"country", 152, 6},
    {"name", 158, 30}, {"valid_from", 188, 16}, {"valid_until", 204, 16}, {"birth", 220, 16},
    {"card_version", 236, 4}, {"issuer", 240, 8}, {"reserved", 250, 6},
}};
inline constexpr FieldPlace card_type_field{"card_type", 248, 2};
inline constexpr char16_t foreign_card_type = u'I';

// One card of the scenario:
//   { "kind": "ordinary" | "foreign", <field key>: "UTF-8 text", ...,
//     "photo": {"file": "portrait.png"} | bytes, "finger": bytes }
// Fields left out are blank. A photo file name that is not absolute is taken
// from `photo_folder`. Throws ScenarioError naming the place of a bad value.
IdentityCard parse_identity_card(const nlohmann::json& value, const std::string& where,
                                 const std::filesystem::path& photo_folder);

}  // namespace qz::sim
