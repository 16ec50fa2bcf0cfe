// What the simulated terminal holds and how it misbehaves, read from a JSON file.
//
//   {
//     "control": { "version": "...", "serial_number": "...", "registration_number": "...",
//                  "card_state": 0, "eeprom": { "size": 512, "fill": "0xFF", "contents": {"hex": "..."} } },
//     "hid": { "report_length": 256 },
//     "faults": [ { "class": "0x00", "instruction": "0x01", "kind": "silence", "times": 1 } ]
//   }
//
// Every key may be left out for its default. Each device model reads a section
// of its own; top-level sections that no model knows are left alone, so models
// added later bring their sections without touching these.
#pragma once

#include <filesystem>
#include <vector>

#include <nlohmann/json.hpp>

#include "sim/models/control/control_model.h"
#include "sim/core/faults.h"
#include "sim/endpoints/hid_endpoint.h"
#include "sim/core/terminal.h"

namespace qz::sim {

struct HidConfig {
    std::uint16_t report_length = default_report_length;
};

struct Scenario {
    ControlConfig control;
    SharedState shared;
    HidConfig hid;
    std::vector<FaultRule> faults;
    // The whole document, for the sections of other models.
    nlohmann::json document = nlohmann::json::object();
};

// Throws ScenarioError naming the place of a bad value.
Scenario parse_scenario(const nlohmann::json& document);
Scenario load_scenario(const std::filesystem::path& file);

}  // namespace qz::sim
