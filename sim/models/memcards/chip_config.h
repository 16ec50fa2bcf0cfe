// The contact memory cards of a scenario, one chip at most in each of the five
// contact slots. A scenario with a "memory_cards" section has the memory card
// commands of class C0 (and the record commands of class D0) fitted:
//
//   "memory_cards": {
//     "slots": [ CHIP or null, ... ]     up to five, slot 0 first; slot 0 is selected at start
//   }
//
// CHIP, every key but "type" may be left out:
//   "type": "sle4442" | "sle4428" | "at88sc102" | "at88sc1604" | "at24c01a"
//   "answer": bytes           what a type query reads; its first two bytes name the kind
//   "code": bytes             PSC (3 bytes SLE4442, 2 SLE4428) or security code (2 bytes
//                             AT88SC102); default all FF
//   "tries": number           tries left of the code (at most 3, 8, 4; AT88SC1604: each code, 4)
//   "writes": [ {"at": address, "data": bytes} ]   memory contents (erased: FF)
//   "protected": [ positions ]                     SLE4442 0..31, SLE4428 0..1023
//   "erase_keys": [ bytes, bytes ]                 AT88SC102: zone 1 and zone 2, 6 bytes each
//   "issuer_fuse": bool, "ec2en_fuse": bool         AT88SC102
//
// Addresses of "writes": SLE4442 0..255, SLE4428 0..1023, AT24C01A 0..127,
// AT88SC1604 0..2006 (its codes lie there too), AT88SC102 0..63 zone 1, 64..127 zone 2,
// 128..135 issuer area, 136..143 protect area.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "sim/core/json_values.h"
#include "sim/models/memcards/memory_chip.h"

namespace qz::sim {

inline constexpr std::size_t memory_slot_count = 5;

enum class ChipKind { sle4442, sle4428, at88sc102, at88sc1604, at24c01a };

struct ChipConfig {
    ChipKind kind = ChipKind::sle4442;
    std::string where;  // names the chip in errors
    std::optional<std::vector<std::uint8_t>> answer;
    std::optional<std::vector<std::uint8_t>> code;
    std::optional<unsigned> tries;
    std::vector<std::pair<std::size_t, std::vector<std::uint8_t>>> writes;
    std::vector<std::size_t> protected_positions;
    std::array<std::optional<std::vector<std::uint8_t>>, 2> erase_keys;
    bool issuer_fuse = false;
    bool ec2en_fuse = false;
};

struct MemoryCardsConfig {
    std::array<std::optional<ChipConfig>, memory_slot_count> slots;
};

// The "memory_cards" section; nothing when the scenario has none. Throws
// ScenarioError naming the place of a bad value.
std::optional<MemoryCardsConfig> parse_memory_cards(const nlohmann::json& document);

// Whether `card` describes a contact memory chip: an object whose "type" names one.
bool describes_chip(const nlohmann::json& card);
// One chip as a scenario describes it; ScenarioError naming `where` for a bad value.
ChipConfig parse_chip(const nlohmann::json& value, const std::string& where);

// The chip a configuration describes; ScenarioError for values the chip can't hold.
std::unique_ptr<MemoryChip> make_chip(const ChipConfig& config);

// Helpers of the chips' constructors: the code (or `fallback`) checked for its
// length, the tries checked against `most`, the writes applied to `memory`.
std::vector<std::uint8_t> configured_code(const ChipConfig& config, std::size_t length);
unsigned configured_tries(const ChipConfig& config, unsigned most);
void apply_writes(const ChipConfig& config, std::span<std::uint8_t> memory);

}  // namespace qz::sim
