#include "sim/core/scenario_folder.h"

namespace qz::sim {

const std::filesystem::path& scenario_folder() {
    static const std::filesystem::path folder = [] {
        std::error_code error;
        const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
        const auto installed = program.parent_path() / QZ_32_SIM_INSTALLED_SCENARIOS;
        if (!error && std::filesystem::exists(installed / "default.json", error))
            return installed.lexically_normal();
        return std::filesystem::path(QZ_32_SIM_SCENARIO_DIR);
    }();
    return folder;
}

}  // namespace qz::sim
