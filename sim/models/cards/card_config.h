// The cards of a scenario: the card in the contactless field and those in the
// five contact slots. A scenario with a "cards" section has the card readers
// fitted (classes C1 and C0, C2..C5, instructions 30 to 32):
//
//   "cards": {
//     "field": CARD or null,
//     "slots": [ CARD or null, ... ]          up to five, slot 0 first
//   }
//
// CARD is {"file": "cards/name.json"} (relative to the scenario folder of the
// build, or absolute) or the card itself; every key may be left out:
//
//   "description": "what the card is for"
//   "atr": bytes                      in a slot; its first protocol sets the rules
//                                     (T=0: 61xx and 6Cxx as T=0 cards answer)
//   "uid": bytes, "ats": bytes, "sak": number       in the field
//   "responses": "direct" or "t0"     in the field: "t0" for a card that answers
//                                     as a T=0 card does (default "direct")
//   "response_chunk": 1..256          most bytes per GET RESPONSE (default 256)
//   "directory": null (none) or {
//     "name": bytes                   default "1PAY.SYS.DDF01" in a slot, "2PAY.SYS.DDF01" in the field
//     "sfi": number or null           entries in record 1 of this SFI (default 1 in a slot);
//                                     null: entries in the FCI (default in the field)
//     "fci": TLVS                     further data objects of template A5 }
//   "applications": [ {
//     "aid": bytes, "label": bytes, "priority": number, "pdol": bytes,
//     "fci": TLVS,                    further data objects of template A5
//     "gpo": { "format": 1 or 2, "aip": bytes (2), "afl": bytes (4 a entry),
//              "data": TLVS           format 2: behind 82 and 94 },
//     "records": [ { "sfi": n, "record": n, and one of
//                    "data": TLVS (in template 70), "raw": bytes, "refuse": status word } ] } ]
//
// TLVS is a list of data objects as ber_tlv.h describes.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "sim/core/card_holder.h"
#include "sim/core/scenario_folder.h"
#include "sim/models/cards/emv_card.h"
#include "sim/models/cards/iso7816_card.h"

namespace qz::sim {

struct CardConfig {
    CardFace face;
    ResponseRules rules = ResponseRules::direct;
    std::size_t response_chunk = max_short_response;
    EmvCardData emv;
};

struct CardsConfig {
    std::optional<CardConfig> field;
    std::array<std::optional<CardConfig>, contact_slot_count> slots;
};

// The "cards" section of a scenario; nothing when it has none. Throws
// ScenarioError naming the place of a bad value.
std::optional<CardsConfig> parse_cards(const nlohmann::json& document,
                                       const std::filesystem::path& folder = scenario_folder());

// One card as it is described for `location`; `where` names it in errors.
CardConfig parse_card(const nlohmann::json& value, CardLocation location, const std::string& where,
                      const std::filesystem::path& folder = scenario_folder());

// A card description read from `file`; ScenarioError naming `where` when it
// cannot be read or is no JSON.
nlohmann::json load_card_file(const std::filesystem::path& file, const std::string& where);

std::unique_ptr<Iso7816Card> make_card(const CardConfig& config);

}  // namespace qz::sim
