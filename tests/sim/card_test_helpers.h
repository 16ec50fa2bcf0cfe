// Helpers of the card reader and bank card tests.
#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>

#include "sim/models/cards/card_config.h"
#include "sim/core/terminal.h"
#include "sim_test_helpers.h"

namespace qz::sim::test {

// A card description of sim/scenarios/cards/.
nlohmann::json card_profile(const std::string& name);

// A terminal of an otherwise empty scenario with `card` in the field or slot 0.
std::shared_ptr<Terminal> terminal_with(const nlohmann::json& card, CardLocation location);

// The card's response to `apdu` (class 31 00 to `class_byte`), which must succeed
// on the terminal's side.
Bytes transmit(Terminal& terminal, std::uint8_t class_byte, const Bytes& apdu);

// The status words at the end of a response.
std::uint16_t status_words(const Bytes& response);

}  // namespace qz::sim::test
