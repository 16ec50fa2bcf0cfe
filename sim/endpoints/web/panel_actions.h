// What a person at the web panel does to the simulated terminal, from JSON
// bodies: cards in and out of the field and the slots, an identity card laid
// on the module, a stripe swiped, a code scanned, keys typed. Every body is
// checked before anything changes; a bad one throws BadRequest with the reason.
// The caller holds the terminal's lock.
#pragma once

#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "sim/core/held_reply.h"
#include "sim/core/terminal.h"

namespace qz::sim {

class BadRequest : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class PanelActions {
public:
    // Card profiles are the files of `card_folder` ("NAME.json"); identity cards
    // and the stripe's tracks come from the scenario `document`.
    PanelActions(Terminal& terminal, const nlohmann::json& document, const std::filesystem::path& card_folder);

    // Carries out the action named (e.g. "cards/insert"); BadRequest for an
    // unknown action or a bad body.
    void act(std::string_view action, const nlohmann::json& body);

    nlohmann::json state(HoldClock::time_point now) const;

private:
    void insert_card(const nlohmann::json& body);
    void remove_card(const nlohmann::json& body);
    void present_identity(const nlohmann::json& body);
    void swipe(const nlohmann::json& body);
    void scan(const nlohmann::json& body);
    void type_keys(const nlohmann::json& body);
    void set_person(const nlohmann::json& body);

    Terminal& terminal_;
    std::map<std::string, std::filesystem::path, std::less<>> card_profiles_;
    std::vector<std::string> identity_cards_;
    std::optional<std::string> identity_present_;
    std::map<std::string, std::vector<std::string>> profile_places_;  // profile -> "field", "slot"
    std::map<std::string, std::string> placed_;  // "field", "slot 0".. -> profile
};

}  // namespace qz::sim
