// qzctl's card and PIN commands, each run against a simulator of its own
// (--sim-serial): the exit code, one field of the JSON printed, what stderr says.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "e2e/child_process.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

struct Invocation {
    const char* scenario;  // a shipped scenario; nothing: qzctl's default
    std::vector<std::string> arguments;
    int exit_code;
    const char* field = nullptr;
    nlohmann::json value = nullptr;
    const char* said = nullptr;
};

TEST(QzctlCommands, CardsAndPinsOfTheShippedScenarios) {
    // The default scenario's keypad types 246810 first, its pad 123456 under work key 0.
    const Invocation runs[] = {
        {"sector_card.json", {"mifare", "value", "-b", "5", "-k", "A0A1A2A3A4A5", "--dec", "10"}, 0, "value", 90},
        {"sector_card.json", {"mifare", "read", "-s", "1"}, 1, nullptr, nullptr, "6300"},  // the factory key
        {"sector_card.json", {"mifare", "write", "-b", "4", "-d", "0011"}, 2},
        {"ultralight_card.json", {"ultralight", "read", "-p", "4", "-n", "2"}, 0, "data", "515A333220554C54"},
        {nullptr, {"memcard", "detect", "-s", "2"}, 0, "type", "SLE4428"},
        // A fresh simulator each run: the PSC was not presented.
        {nullptr, {"memcard", "write", "-t", "sle4442", "-s", "1", "-o", "64", "-d", "4142"}, 1, nullptr, nullptr, "6982"},
        {nullptr, {"memcard", "code", "-t", "sle4442", "-s", "1", "-k", "FFFFFE"}, 1, nullptr, nullptr, "tries left: 2"},
        {nullptr, {"memcard", "read", "-t", "sle4442", "-s", "1", "-o", "32", "-l", "4"}, 0, "data", "515A3332"},
        {nullptr, {"memcard", "read", "-t", "sle4442", "-s", "1", "-o", "300"}, 2},
        {nullptr, {"pin"}, 0, "data", "3234363831300000", "Key the PIN"},
        {nullptr, {"pinpad", "enter", "-k", "3C5A6996A5C30FF0123456789ABCDEF0", "-d", "123456789012"}, 0, "pin", "123456"},
        {nullptr, {"pinpad", "enter", "-k", "0B162C58B061C285"}, 1},
        {nullptr, {"pinpad", "enter", "-n", "9"}, 1, nullptr, nullptr, "6A88"},
        {nullptr, {"pinpad", "enter", "-d", "12345"}, 2},
    };
    TempDir folder;
    for (const Invocation& r : runs) {
        std::vector<std::string> arguments{QZ_32_QZCTL, "--sim-serial", "--json"};
        if (r.scenario) arguments.insert(arguments.end(), {"--scenario", std::string(QZ_32_SIM_SCENARIO_DIR "/") + r.scenario});
        arguments.insert(arguments.end(), r.arguments.begin(), r.arguments.end());
        const auto run = run_program(arguments, {{"QZ_32_LOG_ROOT", (folder.path() / "no-log").string()}});
        std::string what;
        for (const auto& argument : r.arguments) what += argument + " ";
        EXPECT_EQ(run.exit_code, r.exit_code) << what << ": " << run.err;
        if (r.field && run.exit_code == 0) {
            EXPECT_EQ(nlohmann::json::parse(run.out)[r.field], r.value) << what;
        }
        if (r.said) {
            EXPECT_NE(run.err.find(r.said), std::string::npos) << what << ": " << run.err;
        }
    }
}

}  // namespace
}  // namespace qz::test
