#include "sim/models/memcards/memory_card_model.h"

#include "sim/core/status.h"
#include "sim/models/cards/card_reader_model.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t card_class = 0xC0;
constexpr std::uint8_t record_class = 0xD0;

constexpr std::uint8_t select_instruction = 0x3F;
constexpr std::uint8_t answer_instruction = 0x82;

enum RecordInstruction : std::uint8_t { record_open = 0x01, record_close = 0x02, record_value = 0x03 };

// The chips' command bytes, first and last of each run.
constexpr std::array<std::pair<std::uint8_t, std::uint8_t>, 4> chip_instructions{
    {{0x40, 0x47}, {0x60, 0x7F}, {0x83, 0x89}, {0x90, 0x97}}};

}  // namespace

MemoryCardModel::MemoryCardModel(const MemoryCardsConfig& config) {
    for (std::size_t i = 0; i < memory_slot_count; ++i)
        if (config.slots[i]) chips_[i] = make_chip(*config.slots[i]);
}

std::vector<Route> MemoryCardModel::routes() const {
    Route cards{card_class, {select_instruction, answer_instruction}};
    for (const auto& [first, last] : chip_instructions)
        for (unsigned instruction = first; instruction <= last; ++instruction)
            cards.instructions.push_back(static_cast<std::uint8_t>(instruction));
    return {cards, {record_class, {record_open, record_close, record_value}}};
}

bool MemoryCardModel::holds(CardLocation location, std::size_t slot) const {
    return location == CardLocation::slot && slot < memory_slot_count && chips_[slot];
}

bool MemoryCardModel::fits(const nlohmann::json& card, CardLocation location) const {
    return location == CardLocation::slot && describes_chip(card);
}

void MemoryCardModel::put(const nlohmann::json& card, CardLocation, std::size_t slot, const std::string& where) {
    chips_.at(slot) = make_chip(parse_chip(card, where));
}

void MemoryCardModel::take_out(CardLocation location, std::size_t slot) {
    if (location == CardLocation::slot) chips_.at(slot).reset();
}

Reply MemoryCardModel::handle(const Command& command) {
    const auto body = command.body();
    if (body.empty()) return Reply::failure(status::wrong_length);
    if (body[0] != 0) return Reply::failure(status::out_of_range);
    Arguments arguments(body.subspan(1));
    try {
        if (command.class_byte() == record_class) return record(command.instruction(), arguments);
        return card_command(command.instruction(), arguments);
    } catch (const Arguments::Length&) {
        return Reply::failure(status::wrong_length);
    }
}

Reply MemoryCardModel::card_command(std::uint8_t instruction, Arguments& arguments) {
    if (instruction == select_instruction) {
        const std::size_t slot = arguments.byte();
        arguments.finish();
        if (slot >= memory_slot_count) return Reply::failure(status::out_of_range);
        selected_ = slot;
        if (chips_[slot]) chips_[slot]->power_up();
        return ok_reply();
    }
    MemoryChip* chip = chips_[selected_].get();
    if (chip == nullptr) return Reply::failure(status::no_card);
    if (instruction == answer_instruction) {
        arguments.finish();
        return ok_reply(chip->answer());
    }
    auto reply = chip->handle(instruction, arguments);
    return reply ? std::move(*reply) : Reply::failure(status::wrong_card);
}

Reply MemoryCardModel::record(std::uint8_t instruction, Arguments& arguments) {
    if (instruction != record_value) {
        arguments.finish();
        recording_ = instruction == record_open;
        recorded_ = 0;
        return ok_reply();
    }
    arguments.low_first();
    arguments.low_first();
    arguments.finish();
    if (!recording_) return Reply::failure(status::refused);
    ++recorded_;
    return ok_reply({static_cast<std::uint8_t>(recorded_), static_cast<std::uint8_t>(recorded_ >> 8),
                     static_cast<std::uint8_t>(recorded_ >> 16), static_cast<std::uint8_t>(recorded_ >> 24)});
}

}  // namespace qz::sim
