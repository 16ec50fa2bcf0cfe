// The "identity" section of a scenario: the cards there are, the one lying on the
// identity module, a failure the module reports instead of reading, and the
// module's identifier.
//
//   "identity": {
//     "module_id": {"hex": "..."},
//     "present": "ordinary",            // a name of "cards", or null: no card
//     "status": "ok",                   // or a name of module_statuses, or {"hex": "01 00 90"}
//     "cards": { "ordinary": { ...card, see identity_card.h... } }
//   }
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "sim/core/scenario_folder.h"
#include "sim/models/identity/identity_card.h"

namespace qz::sim {

// The three status bytes the module puts at the head of a read reply.
using ModuleStatus = std::array<std::uint8_t, 3>;

struct ModuleStatusName {
    std::string_view name;
    ModuleStatus bytes;
};

inline constexpr ModuleStatus module_ok{0x00, 0x00, 0x90};
inline constexpr ModuleStatus module_card_missing{0x00, 0x00, 0x80};

inline constexpr std::array<ModuleStatusName, 7> module_statuses{{
    {"ok", module_ok},
    {"card_missing", module_card_missing},
    {"select_failed", {0x00, 0x00, 0x81}},
    {"no_content", {0x00, 0x00, 0x91}},
    {"read_failed", {0x00, 0x00, 0x41}},
    {"unknown_card", {0x00, 0x00, 0x40}},
    {"random_failed", {0x00, 0x00, 0x47}},
}};

// The identifier answers one command whose reply length the host keeps in a byte.
inline constexpr std::size_t max_module_id_length = 255;

struct IdentityConfig {
    std::vector<std::uint8_t> module_id{0x05, 0x00, 0x01, 0x00, 0x20, 0x24, 0x11, 0x23,
                                        0x00, 0x00, 0x00, 0x01, 0x51, 0x5A, 0x00, 0x01};
    std::map<std::string, IdentityCard, std::less<>> cards;
    std::optional<std::string> present;  // a key of `cards`
    // What the module answers to a read instead of reading; module_ok: it reads.
    ModuleStatus status = module_ok;
};

// Reads the "identity" section of a scenario document (defaults without one);
// photo files are looked for in `photo_folder`.
// Throws ScenarioError naming the place of a bad value.
IdentityConfig parse_identity(const nlohmann::json& document,
                              const std::filesystem::path& photo_folder = scenario_folder());

}  // namespace qz::sim
