// The library against the simulated terminal in this process, and HEX files
// written by the tests.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "link/link_state.h"
#include "qz_32.h"
#include "support/scripted_terminal.h"
#include "support/simulated_terminal.h"
#include "support/temp_dir.h"

namespace qz::test {

// Intel HEX text of `image` in data records of `record` bytes.
inline std::string hex_text(const Bytes& image, std::size_t record = 16) {
    std::string text;
    char line[16];
    for (std::size_t at = 0; at < image.size(); at += record) {
        const std::size_t count = std::min(record, image.size() - at);
        unsigned sum = static_cast<unsigned>(count + (at >> 8) + at);
        std::snprintf(line, sizeof line, ":%02X%04X00", static_cast<unsigned>(count), static_cast<unsigned>(at & 0xFFFF));
        text += line;
        for (std::size_t i = 0; i < count; ++i) {
            std::snprintf(line, sizeof line, "%02X", image[at + i]);
            text += line;
            sum += image[at + i];
        }
        std::snprintf(line, sizeof line, "%02X\r\n", (0x100 - (sum & 0xFF)) & 0xFF);
        text += line;
    }
    return text + ":00000001FF\r\n";
}

class SimTerminal : public ::testing::Test {
protected:
    void start(const nlohmann::json& document) {
        sim.emplace(document.is_null() ? nlohmann::json::object() : document);
        icdev = sim->icdev;
        ASSERT_GT(icdev, 1);
    }
    std::filesystem::path write_file(const std::string& name, const std::string& bytes) const {
        const auto path = folder.path() / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }
    std::pair<std::uint32_t, std::uint32_t> timeouts() const {
        return {link::link_state().read_ms, link::link_state().write_gap_ms};
    }
    std::uint32_t tick_ms() { return sim->os.tick_ms(); }

    TempDir folder;
    std::optional<SimulatedTerminal> sim;
    int icdev = 0;
};

}  // namespace qz::test
