// What the simulated barcode scanner holds, from the "scanner" section:
//
//   "scanner": { "version": "QZSCAN V1.00", "codes": ["6901234567892", {"hex": "..."}],
//                "polls_before_code": 0, "acknowledge_apart": false,
//                "loader_version": "QZSCAN BOOT 1.0", "new_version": "QZSCAN V2.00",
//                "refuse_package": 3, "silent_after_package": 5 }
//
// "version": null stands for an older scanner that doesn't answer its version
// and reads two-dimensional codes only by polling. Packages are counted from 1.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace qz::sim {

struct ScannerConfig {
    std::optional<std::string> version = "QZSCAN V1.00";
    std::deque<std::vector<std::uint8_t>> codes;
    unsigned polls_before_code = 0;
    bool acknowledge_apart = false;
    std::string loader_version = "QZSCAN BOOT 1.0";
    std::string new_version = "QZSCAN V2.00";
    std::optional<unsigned> refuse_package;
    std::optional<unsigned> silent_after_package;
};

ScannerConfig parse_scanner(const nlohmann::json& document);

}  // namespace qz::sim
