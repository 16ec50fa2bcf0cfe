#include "sim/models/scanner/scanner_config.h"

#include "sim/core/json_values.h"

namespace qz::sim {

ScannerConfig parse_scanner(const nlohmann::json& document) {
    ScannerConfig config;
    if (!document.contains("scanner")) return config;
    const auto& section = json_object(document["scanner"],
                                      {"version", "codes", "polls_before_code", "acknowledge_apart", "loader_version",
                                       "new_version", "refuse_package", "silent_after_package"},
                                      "scanner");
    const auto text = [&](const char* key) {
        const auto bytes = json_bytes(section[key], std::string("scanner.") + key);
        return std::string(bytes.begin(), bytes.end());
    };
    const auto number = [&](const char* key) {
        return static_cast<unsigned>(json_number(section[key], 0xFFFFFF, std::string("scanner.") + key));
    };
    if (section.contains("version")) config.version = section["version"].is_null() ? std::nullopt : std::optional(text("version"));
    if (section.contains("codes")) {
        if (!section["codes"].is_array()) throw ScenarioError("scanner.codes: a list");
        for (std::size_t i = 0; i < section["codes"].size(); ++i)
            config.codes.push_back(json_bytes(section["codes"][i], "scanner.codes[" + std::to_string(i) + "]"));
    }
    if (section.contains("polls_before_code")) config.polls_before_code = number("polls_before_code");
    if (section.contains("acknowledge_apart")) config.acknowledge_apart = section["acknowledge_apart"].get<bool>();
    if (section.contains("loader_version")) config.loader_version = text("loader_version");
    if (section.contains("new_version")) config.new_version = text("new_version");
    if (section.contains("refuse_package")) config.refuse_package = number("refuse_package");
    if (section.contains("silent_after_package")) config.silent_after_package = number("silent_after_package");
    return config;
}

}  // namespace qz::sim
