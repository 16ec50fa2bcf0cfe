#include "sim/models/rfcards/field_memory_model.h"

#include <map>
#include <string>

#include "sim/core/status.h"
#include "sim/models/cards/card_reader_model.h"
#include "sim/models/rfcards/field_config.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t field_class = 0xC1;
constexpr std::uint8_t field_status_class = 0x32;
constexpr std::uint8_t terminal_class = 0x00;

constexpr std::uint8_t instruction_activate = 0x30;
constexpr std::uint8_t instruction_deselect = 0x33;
constexpr std::uint8_t instruction_select = 0x40;
constexpr std::uint8_t instruction_halt = 0x45;
constexpr std::uint8_t instruction_reset_field = 0x4E;
constexpr std::uint8_t instruction_field_status = 0x70;
constexpr std::uint8_t instruction_antenna = 0x0E;
constexpr std::uint8_t instruction_uids = 0x0F;
constexpr std::uint8_t antenna_parameter = 0x20;
constexpr std::uint8_t antenna_working = 0x00;
constexpr std::uint8_t select_any = 1;

// The card commands, which the selected card carries out.
const std::map<std::uint8_t, std::string> card_instruction_names{
    {0x46, "read"},      {0x47, "sector card write"}, {0x48, "increment"},      {0x49, "decrement"},
    {0x4A, "restore"},   {0x4B, "transfer"},          {0x4C, "page card write"}, {0x4F, "page card authenticate"},
    {0x50, "page range read"}, {0x5F, "sector card authenticate"}};

bool bare(std::span<const std::uint8_t> body) { return body.size() == 1 && body[0] == 0; }

}  // namespace

FieldMemoryModel::FieldMemoryModel(std::vector<std::unique_ptr<FieldCard>> cards, const SharedState& shared)
    : shared_(shared) {
    for (auto& card : cards) cards_.push_back({std::move(card)});
}

std::vector<Route> FieldMemoryModel::routes() const {
    std::vector<std::uint8_t> field{instruction_deselect, instruction_select, instruction_halt,
                                    instruction_reset_field};
    for (const auto& [instruction, name] : card_instruction_names) field.push_back(instruction);
    std::map<std::uint8_t, std::string> names{{instruction_deselect, "deselect"},
                                              {instruction_select, "select"},
                                              {instruction_halt, "halt"},
                                              {instruction_reset_field, "field reset"}};
    for (const auto& [instruction, name] : card_instruction_names) names[instruction] = name;
    return {Route{field_class, field}.named("contactless memory card", std::move(names)),
            Route{field_status_class, {instruction_field_status}}.named("field", {{instruction_field_status, "state"}}),
            Route{field_class, {instruction_activate}, true}.named("contactless memory card",
                                                                   {{instruction_activate, "activate"}}),
            Route{terminal_class, {instruction_antenna, instruction_uids}, true}.named(
                "field", {{instruction_antenna, "antenna"}, {instruction_uids, "card UIDs"}})};
}

// An activation is the microprocessor card's while one is in the field. Of class
// 00 only the antenna query (parameter 20) and the UID list (no parameter at all)
// are the field's; the rest belongs to the terminal's control commands.
bool FieldMemoryModel::takes(const Command& command) const {
    if (command.class_byte() == field_class) return !shared_.held_by_other(*this, CardLocation::field, 0);
    if (command.class_byte() != terminal_class) return true;
    if (command.instruction() == instruction_antenna)
        return command.body().size() == 1 && command.body()[0] == antenna_parameter;
    return command.body().empty();
}

Reply FieldMemoryModel::handle(const Command& command) {
    const auto body = command.body();
    switch (command.class_byte()) {
        case field_status_class:
            return bare(body) ? ok_reply({field_state()}) : Reply::failure(status::wrong_length);
        case terminal_class:
            return command.instruction() == instruction_antenna ? ok_reply({antenna_working}) : uids();
        default:
            break;
    }
    try {
        return field_command(command.instruction(), body);
    } catch (const Arguments::Length&) {
        return Reply::failure(status::wrong_length);
    }
}

Reply FieldMemoryModel::field_command(std::uint8_t instruction, std::span<const std::uint8_t> body) {
    switch (instruction) {
        case instruction_select:
        case instruction_activate:
            return select(body, instruction == instruction_activate);
        case instruction_halt:
        case instruction_deselect:
        case instruction_reset_field:
            if (!bare(body)) return Reply::failure(status::wrong_length);
            break;
        default: {
            if (!selected_) return Reply::failure(status::no_card);
            auto reply = cards_[*selected_].card->handle(instruction, body);
            return reply ? std::move(*reply) : Reply::failure(status::instruction_unknown);
        }
    }
    if (instruction == instruction_reset_field) {
        for (InField& in_field : cards_) {
            in_field.card->power_cycle();
            in_field.halted = false;
        }
    } else if (instruction == instruction_halt) {
        if (!selected_) return Reply::failure(status::no_card);
        cards_[*selected_].halted = true;
    }
    selected_.reset();
    return instruction == instruction_deselect ? ok_reply({field_state()}) : ok_reply();
}

Reply FieldMemoryModel::select(std::span<const std::uint8_t> body, bool activation) {
    if (body.size() != 2) return Reply::failure(status::wrong_length);
    if (body[0] != 0 || body[1] > select_any) return Reply::failure(status::out_of_range);
    selected_.reset();
    for (std::size_t i = 0; i < cards_.size(); ++i) {
        if (cards_[i].halted && body[1] != select_any) continue;
        cards_[i].halted = false;
        cards_[i].card->power_cycle();  // a new selection starts without authentication
        selected_ = i;
        if (!activation) return ok_reply(cards_[i].card->serial());
        const auto uid = cards_[i].card->uid();
        std::vector<std::uint8_t> data{cards_[i].card->sak(), static_cast<std::uint8_t>(uid.size())};
        data.insert(data.end(), uid.begin(), uid.end());
        data.push_back(0);  // no answer to select
        return ok_reply(std::move(data));
    }
    return Reply::failure(status::no_card);
}

bool FieldMemoryModel::holds(CardLocation location, std::size_t) const {
    return location == CardLocation::field && !cards_.empty();
}

bool FieldMemoryModel::fits(const nlohmann::json& card, CardLocation location) const {
    return location == CardLocation::field && describes_field_card(card);
}

void FieldMemoryModel::put(const nlohmann::json& card, CardLocation, std::size_t, const std::string& where) {
    cards_.push_back({parse_field_card(card, where)});
}

void FieldMemoryModel::take_out(CardLocation location, std::size_t) {
    if (location != CardLocation::field) return;
    cards_.clear();
    selected_.reset();
}

Reply FieldMemoryModel::uids() const {
    std::vector<std::uint8_t> data{static_cast<std::uint8_t>(cards_.size())};
    for (const InField& in_field : cards_) {
        const auto uid = in_field.card->uid();
        data.push_back(static_cast<std::uint8_t>(uid.size()));
        data.insert(data.end(), uid.begin(), uid.end());
    }
    return ok_reply(std::move(data));
}

}  // namespace qz::sim
