// The library on one link to a simulated terminal in this process, behind the
// platform layer, for the life of the object: the end-to-end fixture of the
// in-process suites.
#pragma once

#include <memory>
#include <string_view>

#include <nlohmann/json.hpp>

#include "sim/core/terminal.h"
#include "sim/endpoints/inprocess_platform.h"

namespace qz::test {

enum class Link { hid, serial };

// A scenario document shipped with the simulator ("default.json", ...).
nlohmann::json shipped_scenario(std::string_view file = "default.json");

class SimulatedTerminal {
public:
    // Opens the device (open_device(0, 115200)); `icdev` tells how that went.
    explicit SimulatedTerminal(const nlohmann::json& document, Link link = Link::hid);
    ~SimulatedTerminal();
    SimulatedTerminal(const SimulatedTerminal&) = delete;
    SimulatedTerminal& operator=(const SimulatedTerminal&) = delete;

    template <class Model>
    Model& model() {
        return *terminal->model<Model>();
    }

    sim::InProcessPlatform os;
    std::shared_ptr<sim::Terminal> terminal;
    int icdev = 0;
};

}  // namespace qz::test
