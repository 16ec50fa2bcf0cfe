#include "sim/models/rfcards/field_config.h"

#include <algorithm>
#include <string>

#include "sim/core/json_values.h"
#include "sim/models/rfcards/page_card.h"
#include "sim/models/rfcards/sector_card.h"

namespace qz::sim {
namespace {

using nlohmann::json;
using Bytes = std::vector<std::uint8_t>;

const Bytes default_sector_uid{0x5A, 0x32, 0x51, 0x01};
const Bytes default_page_uid{0x04, 0x51, 0x5A, 0x33, 0x32, 0x80, 0x01};

// Lays the "writes" of `card` over `memory`, `unit` bytes to an address.
void apply_writes(const json& card, std::span<std::uint8_t> memory, std::size_t unit, const std::string& where) {
    if (!card.contains("writes")) return;
    const json& writes = card["writes"];
    if (!writes.is_array()) throw ScenarioError(where + ".writes: a list");
    for (std::size_t i = 0; i < writes.size(); ++i) {
        const std::string at = where + ".writes[" + std::to_string(i) + "]";
        json_object(writes[i], {"at", "data"}, at);
        if (!writes[i].contains("at") || !writes[i].contains("data"))
            throw ScenarioError(at + ": \"at\" and \"data\" both");
        const std::size_t start = json_number(writes[i]["at"], memory.size() / unit - 1, at + ".at") * unit;
        const Bytes data = json_bytes(writes[i]["data"], at + ".data");
        if (data.size() > memory.size() - start) throw ScenarioError(at + ".data: runs past the end of the card");
        std::ranges::copy(data, memory.begin() + static_cast<std::ptrdiff_t>(start));
    }
}

Bytes uid_of(const json& card, const Bytes& fallback, const std::string& where) {
    Bytes uid = card.contains("uid") ? json_bytes(card["uid"], where + ".uid") : fallback;
    if (uid.size() != fallback.size())
        throw ScenarioError(where + ".uid: " + std::to_string(fallback.size()) + " bytes");
    return uid;
}

}  // namespace

bool describes_field_card(const json& card) {
    if (!card.is_object() || !card.contains("type") || !card["type"].is_string()) return false;
    const auto& type = card["type"].get_ref<const std::string&>();
    return type == "sector" || type == "ultralight" || type == "ntag215";
}

std::unique_ptr<FieldCard> parse_field_card(const json& card, const std::string& where) {
    json_object(card, {"type", "uid", "writes"}, where);
    const std::string type = card.contains("type") && card["type"].is_string() ? card["type"].get<std::string>() : "";
    if (type == "sector") {
        const Bytes uid = uid_of(card, default_sector_uid, where);
        const auto uid_span = std::span<const std::uint8_t, 4>(uid.data(), 4);
        auto memory = SectorCard::factory_memory(uid_span);
        apply_writes(card, memory, SectorCard::block_size, where);
        return std::make_unique<SectorCard>(uid_span, memory);
    }
    if (type == "ultralight" || type == "ntag215") {
        const auto kind = type == "ultralight" ? PageCard::Kind::ultralight : PageCard::Kind::ntag215;
        const Bytes uid = uid_of(card, default_page_uid, where);
        const auto uid_span = std::span<const std::uint8_t, PageCard::uid_size>(uid.data(), PageCard::uid_size);
        auto memory = PageCard::factory_memory(kind, uid_span);
        apply_writes(card, memory, PageCard::page_size, where);
        return std::make_unique<PageCard>(kind, uid_span, std::move(memory));
    }
    throw ScenarioError(where + ".type: \"sector\", \"ultralight\" or \"ntag215\"");
}

std::optional<std::vector<std::unique_ptr<FieldCard>>> parse_field_memory(const json& document) {
    if (!document.contains("field_memory")) return std::nullopt;
    const json& section = json_object(document["field_memory"], {"cards"}, "field_memory");
    std::vector<std::unique_ptr<FieldCard>> cards;
    if (!section.contains("cards")) return cards;
    if (!section["cards"].is_array()) throw ScenarioError("field_memory.cards: a list");
    for (std::size_t i = 0; i < section["cards"].size(); ++i)
        cards.push_back(parse_field_card(section["cards"][i], "field_memory.cards[" + std::to_string(i) + "]"));
    return cards;
}

}  // namespace qz::sim
