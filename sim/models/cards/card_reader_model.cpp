#include "sim/models/cards/card_reader_model.h"

#include <algorithm>
#include <stdexcept>

#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t field_class = 0xC1;
constexpr std::array<std::uint8_t, contact_slot_count> slot_classes{0xC0, 0xC2, 0xC3, 0xC4, 0xC5};

constexpr std::uint8_t instruction_activate = 0x30;
constexpr std::uint8_t instruction_exchange = 0x31;
constexpr std::uint8_t instruction_deactivate = 0x32;

constexpr std::uint8_t max_field_mode = 1;
constexpr std::uint8_t reset_bit = 0x01;
constexpr std::uint8_t speed_shift = 4;
constexpr std::uint8_t max_speed_code = 5;
constexpr std::size_t shortest_apdu = 4;

Reply ok(std::vector<std::uint8_t> data = {}) { return {status::ok, std::move(data)}; }

}  // namespace

CardReaderModel::CardReaderModel(const CardsConfig& cards) {
    if (cards.field) field_.insert(make_card(*cards.field));
    for (std::size_t i = 0; i < contact_slot_count; ++i)
        if (cards.slots[i]) slots_[i].insert(make_card(*cards.slots[i]));
}

std::vector<Route> CardReaderModel::routes() const {
    const std::vector<std::uint8_t> card_instructions{instruction_activate, instruction_exchange,
                                                      instruction_deactivate};
    const std::map<std::uint8_t, std::string> names{
        {instruction_activate, "activate"}, {instruction_exchange, "APDU"}, {instruction_deactivate, "deactivate"}};
    std::vector<Route> routes{Route{field_class, card_instructions}.named("contactless card", names)};
    for (std::size_t slot = 0; slot < contact_slot_count; ++slot)
        routes.push_back(Route{slot_classes[slot], card_instructions}.named("slot " + std::to_string(slot), names));
    return routes;
}

Reply CardReaderModel::handle(const Command& command) {
    const bool field = command.class_byte() == field_class;
    const auto slot = std::find(slot_classes.begin(), slot_classes.end(), command.class_byte());
    if (!field && slot == slot_classes.end()) return Reply::failure(status::class_unknown);
    CardPlace& place = field ? field_ : slots_[static_cast<std::size_t>(slot - slot_classes.begin())];
    switch (command.instruction()) {
        case instruction_activate:
            return field ? activate_field(command.body()) : activate_slot(place, command.body());
        case instruction_exchange:
            return exchange(place, command.body());
        case instruction_deactivate:
            return deactivate(place, command.body());
        default:
            return Reply::failure(status::instruction_unknown);
    }
}

Reply CardReaderModel::activate_field(std::span<const std::uint8_t> body) {
    if (body.size() != 2) return Reply::failure(status::wrong_length);
    if (body[0] != 0 || body[1] > max_field_mode) return Reply::failure(status::out_of_range);
    const Iso7816Card* card = field_.activate();
    if (card == nullptr) return Reply::failure(status::no_card);
    const CardFace& face = card->face();
    std::vector<std::uint8_t> data{face.sak, static_cast<std::uint8_t>(face.uid.size())};
    data.insert(data.end(), face.uid.begin(), face.uid.end());
    data.push_back(static_cast<std::uint8_t>(face.ats.size()));
    data.insert(data.end(), face.ats.begin(), face.ats.end());
    return ok(std::move(data));
}

Reply CardReaderModel::activate_slot(CardPlace& slot, std::span<const std::uint8_t> body) {
    if (body.size() != 1) return Reply::failure(status::wrong_length);
    const std::uint8_t parameter = body[0];
    const bool other_bits = (parameter & ~(reset_bit | 0xF0)) != 0;
    if (other_bits || (parameter >> speed_shift) > max_speed_code) return Reply::failure(status::out_of_range);
    // A reset of a card that is not powered is a power-on: either way it starts afresh.
    const Iso7816Card* card = slot.activate();
    if (card == nullptr) return Reply::failure(status::no_card);
    return ok(card->face().atr);
}

Reply CardReaderModel::exchange(CardPlace& place, std::span<const std::uint8_t> body) {
    if (body.empty() || body[0] != 0) return Reply::failure(body.empty() ? status::wrong_length : status::out_of_range);
    const auto apdu = body.subspan(1);
    if (apdu.size() < shortest_apdu) return Reply::failure(status::wrong_length);
    if (place.card() == nullptr) return Reply::failure(status::no_card);
    auto response = place.transmit(apdu);
    if (!response) return Reply::failure(status::card_inactive);
    return ok(std::move(*response));
}

Reply CardReaderModel::deactivate(CardPlace& place, std::span<const std::uint8_t> body) {
    if (body.size() != 1) return Reply::failure(status::wrong_length);
    if (body[0] != 0) return Reply::failure(status::out_of_range);
    place.deactivate();
    return ok();
}

void CardReaderModel::insert(std::unique_ptr<Iso7816Card> card, CardLocation location, std::size_t slot) {
    place_of(location, slot).insert(std::move(card));
}

std::unique_ptr<Iso7816Card> CardReaderModel::take(CardLocation location, std::size_t slot) {
    return place_of(location, slot).take();
}

bool CardReaderModel::fits(const nlohmann::json& card, CardLocation) const {
    return card.is_object() && !card.contains("type");
}

void CardReaderModel::put(const nlohmann::json& card, CardLocation location, std::size_t slot,
                          const std::string& where) {
    insert(make_card(parse_card(card, location, where)), location, slot);
}

template <class Self>
auto& CardReaderModel::place_in(Self& self, CardLocation location, std::size_t slot) {
    if (location == CardLocation::field) return self.field_;
    if (slot >= contact_slot_count) throw std::out_of_range("no contact slot " + std::to_string(slot));
    return self.slots_[slot];
}

const CardPlace& CardReaderModel::place(CardLocation location, std::size_t slot) const {
    return place_in(*this, location, slot);
}

CardPlace& CardReaderModel::place_of(CardLocation location, std::size_t slot) {
    return place_in(*this, location, slot);
}

}  // namespace qz::sim
