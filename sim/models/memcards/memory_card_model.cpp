#include "sim/models/memcards/memory_card_model.h"

#include <map>
#include <string>

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

// What the chips' commands do, for a traffic view.
const std::map<std::uint8_t, std::string> chip_instruction_names{
    {0x40, "SLE4442 read"},
    {0x41, "SLE4442 write"},
    {0x42, "SLE4442 PSC check"},
    {0x43, "SLE4442 PSC read"},
    {0x44, "SLE4442 PSC change"},
    {0x45, "SLE4442 protection read"},
    {0x46, "SLE4442 protection write"},
    {0x47, "SLE4442 error counter"},
    {0x60, "AT88SC102 code check"},
    {0x61, "AT88SC102 code change"},
    {0x62, "AT88SC102 code read"},
    {0x63, "AT88SC102 zone 1 erase key check"},
    {0x64, "AT88SC102 zone 2 erase key check"},
    {0x65, "AT88SC102 zone 1 erase key change"},
    {0x66, "AT88SC102 zone 2 erase key change"},
    {0x67, "AT88SC102 zone 1 erase key read"},
    {0x68, "AT88SC102 zone 2 erase key read"},
    {0x69, "AT88SC102 error counter"},
    {0x6A, "AT88SC102 erase counter"},
    {0x6B, "AT88SC102 selector 1 clear"},
    {0x6E, "AT88SC102 selector 4 clear"},
    {0x6F, "AT88SC102 zone 1 read"},
    {0x70, "AT88SC102 zone 2 read"},
    {0x71, "AT88SC102 zone 1 erase"},
    {0x72, "AT88SC102 zone 2 erase"},
    {0x73, "AT88SC102 zone 2 erase by the issuer"},
    {0x74, "AT88SC102 fuse set"},
    {0x75, "AT88SC102 fuse clear"},
    {0x76, "AT88SC102 zone 1 write"},
    {0x77, "AT88SC102 zone 2 write"},
    {0x78, "AT88SC102 zone 2 write by the issuer"},
    {0x79, "AT88SC102 issuer fuse blow"},
    {0x7A, "AT88SC102 EC2EN fuse blow"},
    {0x7B, "AT88SC102 answer read"},
    {0x7C, "AT88SC102 issuer area write"},
    {0x7D, "AT88SC102 issuer area read"},
    {0x7E, "AT88SC102 protect area write"},
    {0x7F, "AT88SC102 protect area read"},
    {0x83, "SLE4428 PSC change"},
    {0x84, "SLE4428 PSC check"},
    {0x85, "SLE4428 read"},
    {0x86, "SLE4428 write"},
    {0x87, "SLE4428 protection read"},
    {0x88, "SLE4428 protection write"},
    {0x89, "SLE4428 error counter"},
    {0x90, "AT88SC1604 or AT24C01A read"},
    {0x91, "AT88SC1604 or AT24C01A write"},
    {0x92, "AT88SC1604 code write"},
    {0x93, "AT88SC1604 erase"},
    {0x94, "AT88SC1604 code check"},
    {0x95, "AT88SC1604 erase key check"},
    {0x96, "AT88SC1604 fuse"},
    {0x97, "AT88SC1604 personalise"},
};

}  // namespace

MemoryCardModel::MemoryCardModel(const MemoryCardsConfig& config) {
    for (std::size_t i = 0; i < memory_slot_count; ++i)
        if (config.slots[i]) chips_[i] = make_chip(*config.slots[i]);
}

std::vector<Route> MemoryCardModel::routes() const {
    auto names = chip_instruction_names;
    names[select_instruction] = "slot select";
    names[answer_instruction] = "card type";
    Route cards = Route{card_class, {select_instruction, answer_instruction}}.named("memory card", std::move(names));
    for (const auto& [first, last] : chip_instructions)
        for (unsigned instruction = first; instruction <= last; ++instruction)
            cards.instructions.push_back(static_cast<std::uint8_t>(instruction));
    return {cards, Route{record_class, {record_open, record_close, record_value}}.named(
                       "record", {{record_open, "open"}, {record_close, "close"}, {record_value, "value"}})};
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
