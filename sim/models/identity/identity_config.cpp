#include "sim/models/identity/identity_config.h"

#include <algorithm>

#include "sim/core/frame_codec.h"
#include "sim/core/json_values.h"

namespace qz::sim {
namespace {

using nlohmann::json;

// Module frame length, status, text, photo and finger lengths: what comes before the text block.
constexpr std::size_t read_reply_head = 2 + 3 + 2 + 2 + 2;
// Reply data of one frame: the frame less its framing, status and reserved byte.
constexpr std::size_t max_reply_data = max_frame_length - frame_overhead - 3;

ModuleStatus parse_status(const json& value, const std::string& where) {
    if (value.is_string()) {
        const auto found = std::find_if(module_statuses.begin(), module_statuses.end(),
                                        [&](const ModuleStatusName& entry) { return entry.name == value; });
        if (found == module_statuses.end())
            throw ScenarioError(where + ": unknown module status \"" + value.get<std::string>() + "\"");
        return found->bytes;
    }
    const auto bytes = json_bytes(value, where);
    if (bytes.size() != 3) throw ScenarioError(where + ": three status bytes");
    return {bytes[0], bytes[1], bytes[2]};
}

void check_fits(const IdentityCard& card, const std::string& where) {
    if (card.photo.size() > 0xFFFF || card.finger.size() > 0xFFFF)
        throw ScenarioError(where + ": photo and finger data take at most 65535 bytes each");
    if (read_reply_head + id_text_block_size + card.photo.size() + card.finger.size() > max_reply_data)
        throw ScenarioError(where + ": photo and finger data do not fit in one reply");
}

}  // namespace

IdentityConfig parse_identity(const json& document, const std::filesystem::path& photo_folder) {
    IdentityConfig config;
    if (!document.contains("identity")) return config;
    const json& section = json_object(document["identity"], {"module_id", "present", "status", "cards"}, "identity");

    if (section.contains("module_id")) {
        config.module_id = json_bytes(section["module_id"], "identity.module_id");
        if (config.module_id.size() > max_module_id_length)
            throw ScenarioError("identity.module_id: longer than 255 bytes");
    }
    if (section.contains("cards")) {
        if (!section["cards"].is_object()) throw ScenarioError("identity.cards: expected an object");
        for (const auto& [name, value] : section["cards"].items()) {
            const std::string where = "identity.cards." + name;
            IdentityCard card = parse_identity_card(value, where, photo_folder);
            check_fits(card, where);
            config.cards.emplace(name, std::move(card));
        }
    }
    if (section.contains("present") && !section["present"].is_null()) {
        if (!section["present"].is_string()) throw ScenarioError("identity.present: expected a card name or null");
        const auto name = section["present"].get<std::string>();
        if (!config.cards.contains(name)) throw ScenarioError("identity.present: no card \"" + name + "\"");
        config.present = name;
    }
    if (section.contains("status")) config.status = parse_status(section["status"], "identity.status");
    return config;
}

}  // namespace qz::sim
