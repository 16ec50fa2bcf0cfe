// Where the shipped scenarios are: those installed with the running program
// (share/qz_32/scenarios beside its bin/), else those of the source tree it was
// built from. Files a scenario names (card profiles, photos) are found there.
#pragma once

#include <filesystem>

namespace qz::sim {

const std::filesystem::path& scenario_folder();

}  // namespace qz::sim
