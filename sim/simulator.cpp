#include "sim/simulator.h"

#include "sim/control_model.h"

namespace qz::sim {

std::shared_ptr<Terminal> make_terminal(const Scenario& scenario) {
    auto terminal = std::make_shared<Terminal>(FaultPlan(scenario.faults), scenario.shared);
    terminal->add_model(std::make_unique<ControlModel>(scenario.control, terminal->shared()));
    return terminal;
}

}  // namespace qz::sim
