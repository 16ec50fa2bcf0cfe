// The contactless memory cards of a scenario. A scenario with a "field_memory"
// section has the reader's memory card commands fitted (class C1 besides the
// microprocessor card commands, 32 70, 00 0E 20 and 00 0F):
//
//   "field_memory": {
//     "cards": [ CARD, ... ]        the cards in the field, the first answering first
//   }
//
// CARD, every key but "type" may be left out:
//   "type": "sector" | "ultralight" | "ntag215"
//   "uid": bytes                  4 bytes for a sector card, else 7
//   "writes": [ {"at": n, "data": bytes} ]
//                                 memory contents over the factory state, from block n
//                                 (sector card: trailers with keys and access bits too)
//                                 or page n (key, password, AUTH0, lock bits too)
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <nlohmann/json.hpp>

#include "sim/models/rfcards/field_card.h"

namespace qz::sim {

// The cards of the "field_memory" section; nothing when the scenario has none.
// Throws ScenarioError naming the place of a bad value.
std::optional<std::vector<std::unique_ptr<FieldCard>>> parse_field_memory(const nlohmann::json& document);

// Whether `card` describes a contactless memory card: an object whose "type" names one.
bool describes_field_card(const nlohmann::json& card);
// One CARD; ScenarioError naming `where` for a bad value.
std::unique_ptr<FieldCard> parse_field_card(const nlohmann::json& card, const std::string& where);

}  // namespace qz::sim
