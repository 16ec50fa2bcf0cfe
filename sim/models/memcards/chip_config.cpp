#include "sim/models/memcards/chip_config.h"

#include <algorithm>
#include <map>

#include "sim/core/json_values.h"
#include "sim/models/memcards/chips.h"

namespace qz::sim {
namespace {

using nlohmann::json;

const std::map<std::string, ChipKind> kinds{{"sle4442", ChipKind::sle4442},
                                            {"sle4428", ChipKind::sle4428},
                                            {"at88sc102", ChipKind::at88sc102},
                                            {"at88sc1604", ChipKind::at88sc1604},
                                            {"at24c01a", ChipKind::at24c01a}};

constexpr std::uint64_t largest_address = 0xFFFF;
constexpr std::size_t longest_answer = 8;

}  // namespace

bool describes_chip(const json& card) {
    return card.is_object() && card.contains("type") && card["type"].is_string() &&
           kinds.contains(card["type"].get<std::string>());
}

ChipConfig parse_chip(const json& value, const std::string& where) {
    const auto& chip = json_object(
        value, {"type", "answer", "code", "tries", "writes", "protected", "erase_keys", "issuer_fuse", "ec2en_fuse"},
        where);
    if (!chip.contains("type") || !chip["type"].is_string() || !kinds.contains(chip["type"].get<std::string>()))
        throw ScenarioError(where + ".type: one of sle4442, sle4428, at88sc102, at88sc1604, at24c01a");
    ChipConfig config;
    config.kind = kinds.at(chip["type"].get<std::string>());
    config.where = where;
    if (chip.contains("answer")) {
        config.answer = json_bytes(chip["answer"], where + ".answer");
        if (config.answer->size() < 2 || config.answer->size() > longest_answer)
            throw ScenarioError(where + ".answer: 2 to 8 bytes");
    }
    if (chip.contains("code")) config.code = json_bytes(chip["code"], where + ".code");
    if (chip.contains("tries")) config.tries = static_cast<unsigned>(json_number(chip["tries"], 255, where + ".tries"));
    if (chip.contains("writes")) {
        if (!chip["writes"].is_array()) throw ScenarioError(where + ".writes: expected a list");
        for (std::size_t i = 0; i < chip["writes"].size(); ++i) {
            const std::string item = where + ".writes[" + std::to_string(i) + "]";
            const auto& write = json_object(chip["writes"][i], {"at", "data"}, item);
            if (!write.contains("at") || !write.contains("data")) throw ScenarioError(item + ": \"at\" and \"data\"");
            config.writes.emplace_back(json_number(write["at"], largest_address, item + ".at"),
                                       json_bytes(write["data"], item + ".data"));
        }
    }
    if (chip.contains("protected")) {
        if (!chip["protected"].is_array()) throw ScenarioError(where + ".protected: expected a list");
        for (const auto& position : chip["protected"])
            config.protected_positions.push_back(json_number(position, largest_address, where + ".protected"));
    }
    if (chip.contains("erase_keys")) {
        const auto& keys = chip["erase_keys"];
        if (!keys.is_array() || keys.size() != 2) throw ScenarioError(where + ".erase_keys: a list of two keys");
        for (std::size_t i = 0; i < 2; ++i) config.erase_keys[i] = json_bytes(keys[i], where + ".erase_keys");
    }
    for (const char* fuse : {"issuer_fuse", "ec2en_fuse"}) {
        if (!chip.contains(fuse)) continue;
        if (!chip[fuse].is_boolean()) throw ScenarioError(where + "." + fuse + ": true or false");
        (std::string_view(fuse) == "issuer_fuse" ? config.issuer_fuse : config.ec2en_fuse) = chip[fuse].get<bool>();
    }
    make_chip(config);  // the chip checks the values it holds
    return config;
}

std::optional<MemoryCardsConfig> parse_memory_cards(const json& document) {
    if (!document.contains("memory_cards")) return std::nullopt;
    const auto& section = json_object(document["memory_cards"], {"slots"}, "memory_cards");
    MemoryCardsConfig config;
    if (!section.contains("slots")) return config;
    const auto& slots = section["slots"];
    if (!slots.is_array() || slots.size() > memory_slot_count)
        throw ScenarioError("memory_cards.slots: a list of at most five");
    for (std::size_t i = 0; i < slots.size(); ++i)
        if (!slots[i].is_null()) config.slots[i] = parse_chip(slots[i], "memory_cards.slots[" + std::to_string(i) + "]");
    return config;
}

std::unique_ptr<MemoryChip> make_chip(const ChipConfig& config) {
    switch (config.kind) {
        case ChipKind::sle4442:
            return make_sle4442(config);
        case ChipKind::sle4428:
            return make_sle4428(config);
        case ChipKind::at88sc102:
            return make_at88sc102(config);
        case ChipKind::at88sc1604:
            return make_at88sc1604(config);
        case ChipKind::at24c01a:
            return make_at24c01a(config);
    }
    throw ScenarioError(config.where + ": unknown chip");
}

std::vector<std::uint8_t> configured_code(const ChipConfig& config, std::size_t length) {
    if (!config.code) return std::vector<std::uint8_t>(length, 0xFF);
    if (config.code->size() != length)
        throw ScenarioError(config.where + ".code: " + std::to_string(length) + " bytes");
    return *config.code;
}

unsigned configured_tries(const ChipConfig& config, unsigned most) {
    if (config.tries.value_or(most) > most) throw ScenarioError(config.where + ".tries: at most " + std::to_string(most));
    return config.tries.value_or(most);
}

void apply_writes(const ChipConfig& config, std::span<std::uint8_t> memory) {
    for (const auto& [at, data] : config.writes) {
        if (at > memory.size() || data.size() > memory.size() - at)
            throw ScenarioError(config.where + ".writes: beyond the " + std::to_string(memory.size()) + " bytes");
        std::ranges::copy(data, memory.begin() + static_cast<std::ptrdiff_t>(at));
    }
}

}  // namespace qz::sim
