// The web panel's page, style and script, embedded in the program at build time.
#pragma once

#include <array>
#include <string_view>

namespace qz::sim {

struct PanelFile {
    std::string_view path;
    std::string_view content_type;
    std::string_view text;
};

extern const std::array<PanelFile, 3> panel_files;

}  // namespace qz::sim
