// Puts together a terminal with every device model from a scenario.
#pragma once

#include <memory>

#include "sim/scenario.h"
#include "sim/terminal.h"

namespace qz::sim {

std::shared_ptr<Terminal> make_terminal(const Scenario& scenario);

}  // namespace qz::sim
