#include "support/simulated_terminal.h"

#include <filesystem>
#include <fstream>

#include "link/link_state.h"
#include "pinpad/pad_state.h"
#include "qz_32.h"
#include "sim/core/scenario.h"
#include "sim/core/simulator.h"

namespace qz::test {

nlohmann::json shipped_scenario(std::string_view file) {
    std::ifstream in(std::filesystem::path(QZ_32_SIM_SCENARIO_DIR) / file);
    return nlohmann::json::parse(in);
}

SimulatedTerminal::SimulatedTerminal(const nlohmann::json& document, Link link)
    : terminal(sim::make_terminal(sim::parse_scenario(document))) {
    if (link == Link::hid)
        os.add_hid_device({.path = "/dev/hidraw0", .terminal = terminal});
    else
        os.add_serial_port({.name = "COM1", .terminal = terminal});
    platform::install(&os);
    link::reset_link_state();
    pinpad::reset_pad_state();
    icdev = open_device(0, 115200);
}

SimulatedTerminal::~SimulatedTerminal() {
    if (icdev > 1) close_device(icdev);
    platform::install(nullptr);
    link::reset_link_state();
    pinpad::reset_pad_state();
}

}  // namespace qz::test
