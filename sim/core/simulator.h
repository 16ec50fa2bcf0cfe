// Puts together a terminal with every device model from a scenario.
#pragma once

#include <memory>

#include "sim/core/scenario.h"
#include "sim/core/terminal.h"

namespace qz::sim {

std::shared_ptr<Terminal> make_terminal(const Scenario& scenario);

}  // namespace qz::sim
