#include "sim/core/scenario.h"

#include <gtest/gtest.h>

#include <fstream>

#include "sim/core/json_values.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using nlohmann::json;
using test::Bytes;
using test::hex;

TEST(Scenario, ShippedDefaultLoads) {
    const Scenario scenario = load_scenario(std::filesystem::path(QZ_32_SIM_SCENARIO_DIR) / "default.json");
    EXPECT_EQ(scenario.control.version, Bytes(default_version_text.begin(), default_version_text.end()));
    EXPECT_EQ(scenario.hid.report_length, 256);
    EXPECT_EQ(scenario.control.eeprom.size(), 512u);
    EXPECT_EQ(Bytes(scenario.control.eeprom.begin(), scenario.control.eeprom.begin() + 9),
              hex("51 5A 33 32 00 01 00 00 FF"));
    EXPECT_TRUE(scenario.faults.empty());
}

TEST(Scenario, EmptyDocumentGivesDefaults) {
    const Scenario scenario = parse_scenario(json::object());
    const Scenario defaults;
    EXPECT_EQ(scenario.control.version, defaults.control.version);
    EXPECT_EQ(scenario.control.eeprom, defaults.control.eeprom);
    EXPECT_EQ(scenario.hid.report_length, default_report_length);
}

TEST(Scenario, ReadsEverySetting) {
    const Scenario scenario = parse_scenario(json::parse(R"({
        "control": {
            "version": "V9",
            "serial_number": {"hex": "01 02 03"},
            "registration_number": "R1",
            "card_state": "0x02",
            "eeprom": {"size": 256, "fill": 0, "contents": {"hex": "AABB"}}
        },
        "hid": {"report_length": 300},
        "cards": {"anything": ["a later model's own section"]},
        "faults": [
            {"class": "0x00", "instruction": 1, "kind": "silence", "times": 2},
            {"class": 0, "instruction": "0x0B", "kind": "status", "status": "0x6A82", "times": "always"},
            {"class": "0xC1", "instruction": 3, "kind": "cut", "keep": 4},
            {"class": 0, "instruction": 4, "kind": "oversized", "len": 1000},
            {"class": 0, "instruction": 5, "kind": "garbage", "bytes": {"hex": "0102"}}
        ]
    })"));
    EXPECT_EQ(scenario.control.version, hex("56 39"));
    EXPECT_EQ(Bytes(scenario.control.serial_number.begin(), scenario.control.serial_number.end()),
              hex("01 02 03 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(scenario.control.registration_number, hex("52 31"));
    EXPECT_EQ(scenario.shared.card_state, 2);
    Bytes eeprom(256, 0);
    eeprom[0] = 0xAA;
    eeprom[1] = 0xBB;
    EXPECT_EQ(scenario.control.eeprom, eeprom);
    EXPECT_EQ(scenario.hid.report_length, 300);
    EXPECT_TRUE(scenario.document.contains("cards"));

    ASSERT_EQ(scenario.faults.size(), 5u);
    EXPECT_EQ(scenario.faults[0].fault.kind, FaultKind::silence);
    EXPECT_EQ(scenario.faults[0].instruction, 1);
    EXPECT_EQ(scenario.faults[0].times, 2u);
    EXPECT_EQ(scenario.faults[1].fault.status, 0x6A82);
    EXPECT_FALSE(scenario.faults[1].times);
    EXPECT_EQ(scenario.faults[2].class_byte, 0xC1);
    EXPECT_EQ(scenario.faults[2].fault.keep, 4u);
    EXPECT_EQ(scenario.faults[3].fault.announced_length, 1000);
    EXPECT_EQ(scenario.faults[4].fault.garbage, hex("01 02"));
}

TEST(Scenario, BadValuesAreNamed) {
    struct Bad {
        const char* document;
        const char* named;
    };
    const Bad cases[] = {
        {R"({"hid": {"report_length": 254}})", "hid.report_length"},
        {R"({"hid": {"report_length": 301}})", "hid.report_length"},
        {R"({"hid": {"report_lenght": 256}})", "unknown key \"report_lenght\""},
        {R"({"control": {"serial_number": "123456789012345678901"}})", "control.serial_number"},
        {R"({"control": {"eeprom": {"size": 100}}})", "control.eeprom.size"},
        {R"({"control": {"eeprom": {"size": 257, "contents": "x"}, "card_state": 1}})", "control.eeprom.size"},
        {R"({"control": {"eeprom": {"size": 256, "contents": {"hex": "0G"}}}})", "control.eeprom"},
        {R"({"control": {"card_state": 256}})", "control.card_state"},
        {R"({"control": {"card_state": "12"}})", "control.card_state"},
        {R"({"control": {"version": 12}})", "control.version"},
        {R"({"faults": [{"class": 0, "instruction": 1, "kind": "loud"}]})", "faults[0].kind"},
        {R"({"faults": [{"class": 0, "kind": "silence"}]})", "\"instruction\" missing"},
        {R"({"faults": [{"class": 0, "instruction": 1, "kind": "status"}]})", "needs \"status\""},
        {R"({"faults": [{"class": 0, "instruction": 1, "kind": "silence", "keep": 3}]})", "\"keep\""},
        {R"({"faults": [{"class": 0, "instruction": 1, "kind": "silence", "times": "often"}]})", "faults[0].times"},
        {R"({"faults": {}})", "faults"},
        {R"([])", "scenario"},
    };
    for (const Bad& bad : cases) {
        try {
            parse_scenario(json::parse(bad.document));
            ADD_FAILURE() << "accepted " << bad.document;
        } catch (const ScenarioError& error) {
            EXPECT_NE(std::string(error.what()).find(bad.named), std::string::npos)
                << bad.document << " gave: " << error.what();
        }
    }
}

TEST(Scenario, UnreadableFilesAreReported) {
    EXPECT_THROW(load_scenario("/nonexistent/scenario.json"), ScenarioError);
    const auto broken = std::filesystem::path(::testing::TempDir()) / "qz_32_sim_broken_scenario.json";
    std::ofstream(broken) << "{ \"control\": ";
    EXPECT_THROW(load_scenario(broken), ScenarioError);
    std::filesystem::remove(broken);
}

}  // namespace
}  // namespace qz::sim
