// The names a traffic view gives requests and replies: each class by the devices
// that answer it, each instruction by its device's name for it (both from the
// models' routes, so a new model's traffic is named by the model itself), and
// the terminal's status words in words.
#pragma once

#include <nlohmann/json.hpp>

#include "sim/core/terminal.h"

namespace qz::sim {

// {"classes": {"C0": "slot 0 / memory card"}, "instructions": {"C0 40": "memory card: SLE4442 read"},
//  "statuses": {"6401": "no card"}}, hexadecimal keys in capitals.
nlohmann::json traffic_names(const Terminal& terminal);

}  // namespace qz::sim
