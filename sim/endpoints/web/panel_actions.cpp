#include "sim/endpoints/web/panel_actions.h"

#include <algorithm>
#include <array>

#include "sim/core/json_values.h"
#include "sim/models/cards/card_config.h"
#include "sim/models/control/control_model.h"
#include "sim/models/identity/identity_config.h"
#include "sim/models/identity/identity_model.h"
#include "sim/models/lcd/lcd_model.h"
#include "sim/models/mechanism/mechanism_model.h"
#include "sim/models/scanner/scanner_model.h"
#include "sim/models/screen/screen_model.h"
#include "sim/models/stripe/stripe_model.h"

namespace qz::sim {
namespace {

using nlohmann::json;

constexpr std::size_t longest_track = 255;
constexpr std::size_t longest_code = 512;
constexpr std::size_t most_keys = 64;

// The panel's names for the keys that are no digits.
constexpr std::array<std::pair<char, char>, 3> key_names{{{'E', enter_key}, {'C', clear_key}, {'X', cancel_key}}};

const json& field(const json& body, const char* name) {
    if (!body.is_object()) throw BadRequest("the body is no JSON object");
    const auto found = body.find(name);
    if (found == body.end()) throw BadRequest(std::string("\"") + name + "\" is missing");
    return *found;
}

// A text of printable ASCII, at most `longest` characters.
std::string printable_text(const json& value, const char* name, std::size_t longest) {
    if (!value.is_string()) throw BadRequest(std::string("\"") + name + "\" is no text");
    const auto& text = value.get_ref<const std::string&>();
    if (text.size() > longest)
        throw BadRequest(std::string("\"") + name + "\" is longer than " + std::to_string(longest));
    if (!std::ranges::all_of(text, [](char c) { return c >= 0x20 && c < 0x7F; }))
        throw BadRequest(std::string("\"") + name + "\" holds characters other than printable ASCII");
    return text;
}

struct Place {
    CardLocation location;
    std::size_t slot;
    std::string name;
};

Place place_of(const json& body) {
    const json& place = field(body, "place");
    if (place == "field") return {CardLocation::field, 0, "field"};
    if (place != "slot") throw BadRequest("\"place\" is \"field\" or \"slot\"");
    const json& slot = field(body, "slot");
    if (!slot.is_number_unsigned() || slot.get<std::size_t>() >= contact_slot_count)
        throw BadRequest("\"slot\" is a number 0 to 4");
    const auto number = slot.get<std::size_t>();
    return {CardLocation::slot, number, "slot " + std::to_string(number)};
}

std::vector<CardHolder*>& holders(Terminal& terminal) {
    auto& holders = terminal.shared().card_holders;
    if (holders.empty()) throw BadRequest("this scenario's terminal has no card readers");
    return holders;
}

bool occupied(const std::vector<CardHolder*>& holders, const Place& place) {
    return std::ranges::any_of(holders, [&](const CardHolder* holder) { return holder->holds(place.location, place.slot); });
}

template <class Model>
Model& device(Terminal& terminal, const char* what) {
    auto* model = terminal.model<Model>();
    if (!model) throw BadRequest(std::string("this scenario's terminal has no ") + what);
    return *model;
}

std::string text_of(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

}  // namespace

PanelActions::PanelActions(Terminal& terminal, const json& document, const std::filesystem::path& card_folder)
    : terminal_(terminal) {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(card_folder, ignored))
        if (entry.path().extension() == ".json") card_profiles_[entry.path().stem().string()] = entry.path();
    // Which places each profile's card goes to, by the holders that take it.
    for (const auto& [name, path] : card_profiles_) {
        json card;
        try {
            card = load_card_file(path, name);
        } catch (const ScenarioError&) {
            continue;  // refused with the reason when it is inserted
        }
        auto& places = profile_places_[name];
        for (const auto& [location, place] : {std::pair{CardLocation::field, "field"}, {CardLocation::slot, "slot"}})
            if (std::ranges::any_of(terminal.shared().card_holders,
                                    [&](const CardHolder* holder) { return holder->fits(card, location); }))
                places.push_back(place);
    }
    const IdentityConfig identity = parse_identity(document);
    for (const auto& [name, card] : identity.cards) identity_cards_.push_back(name);
    identity_present_ = identity.present;
}

void PanelActions::act(std::string_view action, const json& body) {
    using Handler = void (PanelActions::*)(const json&);
    static const std::map<std::string_view, Handler> handlers{
        {"cards/insert", &PanelActions::insert_card}, {"cards/remove", &PanelActions::remove_card},
        {"identity", &PanelActions::present_identity}, {"stripe", &PanelActions::swipe},
        {"scan", &PanelActions::scan},                 {"keys", &PanelActions::type_keys},
        {"person", &PanelActions::set_person},
    };
    const auto handler = handlers.find(action);
    if (handler == handlers.end()) throw BadRequest("no such action: " + std::string(action));
    (this->*handler->second)(body);
}

void PanelActions::insert_card(const json& body) {
    const Place place = place_of(body);
    const json& name = field(body, "profile");
    const auto profile = name.is_string() ? card_profiles_.find(name.get<std::string>()) : card_profiles_.end();
    if (profile == card_profiles_.end()) throw BadRequest("\"profile\" names none of the card profiles");
    auto& cards = holders(terminal_);
    if (occupied(cards, place)) throw BadRequest("a card is already in the " + place.name);
    const std::string where = "profile " + profile->first;
    try {
        const json card = load_card_file(profile->second, where);
        const auto holder =
            std::ranges::find_if(cards, [&](const CardHolder* holder) { return holder->fits(card, place.location); });
        if (holder == cards.end()) throw BadRequest(where + " is no card for the " + place.name);
        (*holder)->put(card, place.location, place.slot, where);
    } catch (const ScenarioError& error) {
        throw BadRequest(error.what());
    }
    placed_[place.name] = profile->first;
}

void PanelActions::remove_card(const json& body) {
    const Place place = place_of(body);
    auto& cards = holders(terminal_);
    if (!occupied(cards, place)) throw BadRequest("no card is in the " + place.name);
    for (CardHolder* holder : cards) holder->take_out(place.location, place.slot);
    placed_.erase(place.name);
}

void PanelActions::present_identity(const json& body) {
    const json& card = field(body, "card");
    auto& module = device<IdentityModel>(terminal_, "identity module");
    if (card.is_null()) {
        module.present(std::nullopt);
        identity_present_.reset();
        return;
    }
    if (!card.is_string() || std::ranges::find(identity_cards_, card.get<std::string>()) == identity_cards_.end())
        throw BadRequest("\"card\" names none of the scenario's identity cards (or is null)");
    module.present(card.get<std::string>());
    identity_present_ = card.get<std::string>();
}

void PanelActions::swipe(const json& body) {
    const json& tracks = field(body, "tracks");
    if (!tracks.is_array() || tracks.size() != 3) throw BadRequest("\"tracks\" is a list of three texts");
    std::array<std::vector<std::uint8_t>, 3> bytes;
    for (std::size_t track = 0; track < bytes.size(); ++track) {
        const auto text = printable_text(tracks[track], "tracks", longest_track);
        bytes[track].assign(text.begin(), text.end());
    }
    device<StripeModel>(terminal_, "stripe reader").swipe(bytes);
}

void PanelActions::scan(const json& body) {
    const auto code = printable_text(field(body, "code"), "code", longest_code);
    if (code.empty()) throw BadRequest("\"code\" is empty");
    device<ScannerModel>(terminal_, "scanner").scan({code.begin(), code.end()});
}

void PanelActions::type_keys(const json& body) {
    const auto keys = printable_text(field(body, "keys"), "keys", most_keys);
    std::string pressed;
    for (const char key : keys) {
        const auto named = std::ranges::find(key_names, key, &std::pair<char, char>::first);
        const char press = named != key_names.end() ? named->second : key;
        if (!Person::is_key(press)) throw BadRequest("\"keys\" holds digits, E (enter), C (clear) and X (cancel) only");
        pressed += press;
    }
    for (const char key : pressed) terminal_.person().press(key);
}

void PanelActions::set_person(const json& body) {
    const json& typing = field(body, "typing");
    if (!typing.is_boolean()) throw BadRequest("\"typing\" is true or false");
    terminal_.person().typing = typing.get<bool>();
}

json PanelActions::state(HoldClock::time_point now) const {
    json state{{"card_profiles", json::array()}, {"identity_cards", identity_cards_},
               {"identity", identity_present_ ? json(*identity_present_) : json(nullptr)},
               {"typing", terminal_.person().typing}, {"card_state", terminal_.shared().card_state_now()}};
    for (const auto& [name, path] : card_profiles_) state["card_profiles"].push_back(name);
    state["profile_places"] = profile_places_;
    if (const auto& cards = terminal_.shared().card_holders; !cards.empty()) {
        const auto occupant = [&](const Place& place) -> json {
            if (!occupied(cards, place)) return nullptr;
            const auto placed = placed_.find(place.name);
            return placed != placed_.end() ? placed->second : "scenario's card";
        };
        state["field"] = occupant({CardLocation::field, 0, "field"});
        for (std::size_t slot = 0; slot < contact_slot_count; ++slot)
            state["slots"].push_back(occupant({CardLocation::slot, slot, "slot " + std::to_string(slot)}));
    }
    if (const auto waiting = terminal_.waiting(now))
        state["prompt"] = {{"what", waiting->what},
                           {"left_ms", waiting->left.count()},
                           {"typed", terminal_.person().digits_typed()}};
    if (const auto* lcd = terminal_.model<LcdModel>()) state["lcd"] = lcd->as_text();
    if (const auto* screen = terminal_.model<ScreenModel>()) state["page"] = screen->shown_page();
    if (const auto* control = terminal_.model<ControlModel>()) state["beeps"] = control->beeps().size();
    if (const auto* stripe = terminal_.model<StripeModel>(); stripe && stripe->tracks())
        for (const auto& track : *stripe->tracks()) state["stripe"].push_back(text_of(track));
    if (const auto* scanner = terminal_.model<ScannerModel>()) state["codes_waiting"] = scanner->codes_waiting();
    if (const auto* mechanism = terminal_.model<MechanismModel>()) {
        static constexpr std::array positions{"none", "gate", "inside"};
        state["mechanism"] = positions.at(static_cast<std::size_t>(mechanism->position()));
    }
    return state;
}

}  // namespace qz::sim
