// The simulator's scenario documents: what ships loads, every setting is read,
// and a bad value is refused with the place it sits at.
#include "sim/core/scenario.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "sim/core/json_values.h"
#include "sim/core/simulator.h"
#include "sim/models/cards/card_config.h"
#include "sim/models/memcards/chip_config.h"
#include "sim/models/rfcards/field_config.h"
#include "support/hex_bytes.h"

namespace qz::sim {
namespace {

using nlohmann::json;
using test::Bytes;
using test::hex;

const std::filesystem::path scenario_dir = QZ_32_SIM_SCENARIO_DIR;

TEST(Scenario, ShippedScenariosAndCardProfilesLoad) {
    for (const char* name : {"default.json", "foreigner.json"}) {
        SCOPED_TRACE(name);
        const Scenario scenario = load_scenario(scenario_dir / name);
        EXPECT_NO_THROW(make_terminal(scenario));
        EXPECT_TRUE(scenario.faults.empty());
    }
    int profiles = 0;
    for (const auto& entry : std::filesystem::directory_iterator(scenario_dir / "cards")) {
        const std::string name = entry.path().stem().string();
        const CardLocation location = name.starts_with("contactless_") ? CardLocation::field : CardLocation::slot;
        const json card = {{"file", "cards/" + entry.path().filename().string()}};
        const json description = load_card_file(entry.path(), name);
        if (describes_chip(description) || describes_field_card(description)) {
            EXPECT_NO_THROW(describes_chip(description) ? (void)parse_chip(description, name)
                                                        : (void)parse_field_card(description, name));
            continue;
        }
        EXPECT_FALSE(parse_card(card, location, name).emv.applications.empty()) << name;
        ++profiles;
    }
    EXPECT_GE(profiles, 10);
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
        "faults": [
            {"class": "0xC1", "instruction": "0x0B", "kind": "status", "status": "0x6A82", "times": "always"},
            {"class": 0, "instruction": 3, "kind": "cut", "keep": 4, "times": 2},
            {"class": 0, "instruction": 4, "kind": "oversized", "len": 1000},
            {"class": 0, "instruction": 5, "kind": "garbage", "bytes": {"hex": "0102"}}
        ]
    })"));
    EXPECT_EQ(scenario.control.version, hex("56 39"));
    EXPECT_EQ(Bytes(scenario.control.serial_number.begin(), scenario.control.serial_number.begin() + 4),
              hex("01 02 03 00"));
    EXPECT_EQ(scenario.control.registration_number, hex("52 31"));
    EXPECT_EQ(scenario.shared.card_state, 2);
    Bytes eeprom(256, 0);
    eeprom[0] = 0xAA;
    eeprom[1] = 0xBB;
    EXPECT_EQ(scenario.control.eeprom, eeprom);
    EXPECT_EQ(scenario.hid.report_length, 300);
    ASSERT_EQ(scenario.faults.size(), 4u);
    EXPECT_EQ(scenario.faults[0].class_byte, 0xC1);
    EXPECT_EQ(scenario.faults[0].instruction, 0x0B);
    EXPECT_EQ(scenario.faults[0].fault.status, 0x6A82);
    EXPECT_FALSE(scenario.faults[0].times);
    EXPECT_EQ(scenario.faults[1].fault.keep, 4u);
    EXPECT_EQ(scenario.faults[1].times, 2u);
    EXPECT_EQ(scenario.faults[2].fault.announced_length, 1000);
    EXPECT_EQ(scenario.faults[3].fault.garbage, hex("01 02"));
}

TEST(Scenario, BadValuesAreNamed) {
    struct Bad {
        const char* document;
        const char* named;
    };
    const Bad cases[] = {
        {R"({"hid": {"report_length": 254}})", "hid.report_length"},
        {R"({"hid": {"report_lenght": 256}})", "unknown key \"report_lenght\""},
        {R"({"control": {"serial_number": "123456789012345678901"}})", "control.serial_number"},
        {R"({"control": {"eeprom": {"size": 257, "contents": "x"}, "card_state": 1}})", "control.eeprom.size"},
        {R"({"faults": [{"class": 0, "instruction": 1, "kind": "loud"}]})", "faults[0].kind"},
        {R"({"faults": [{"class": 0, "instruction": 1, "kind": "silence", "times": "often"}]})", "faults[0].times"},
        {R"({"cards": {"slots": [{"atr": {"hex": "3B 6A 00"}}]}})", ".atr"},
        {R"({"cards": {"field": {"applications": [{"aid": {"hex": "A0 00 00 03"}}]}}})", "applications[0].aid"},
        {R"({"cards": {"slots": [null, null, null, null, null, null]}})", "cards.slots"},
        {R"({"identity": {"cards": {"a": {"name": "一二三四五六七八九十一二三四五六"}}}})", "16 characters"},
        {R"({"identity": {"cards": {"a": {"photo": {"file": "missing.png"}}}}})", "identity.cards.a.photo.file"},
        {R"({"identity": {"status": "jammed"}})", "unknown module status \"jammed\""},
        {R"({"keypad": {"entries": ["12a4"]}})", "keypad.entries"},
        {R"({"pinpad": {"main_keys": [{"number": 16, "key": {"hex": "0B 16 2C 58 B0 61 C2 85"}}]}})", "pinpad"},
        {R"({"memory_cards": {"slots": [{"type": "sle5542"}]}})", "memory_cards.slots[0].type"},
        {R"({"memory_cards": {"slots": [{"type": "sle4442", "code": {"hex": "12 34"}}]}})", ".code: 3 bytes"},
        {R"({"memory_cards": {"slots": [{"type": "at24c01a", "writes": [{"at": 127, "data": "AB"}]}]}})",
         ".writes: beyond the 128 bytes"},
        {R"({"memory_cards": {"slots": [{"type": "sle4442", "colour": "red"}]}})", "colour"},
    };
    for (const Bad& bad : cases) {
        try {
            make_terminal(parse_scenario(json::parse(bad.document)));
            ADD_FAILURE() << "accepted " << bad.document;
        } catch (const ScenarioError& error) {
            EXPECT_NE(std::string(error.what()).find(bad.named), std::string::npos)
                << bad.document << " gave: " << error.what();
        }
    }
}

TEST(Scenario, Utf8ThatIsNotWellFormedIsRefused) {
    // Overlong, a surrogate, cut short, a lone continuation byte, a five-byte form.
    for (const char* text : {"\xC0\xAF", "\xED\xA0\x80", "\xE4\xB8", "\x80", "\xF8\x88\x80\x80\x80"}) {
        // nlohmann keeps such bytes as they are; it checks UTF-8 only when writing.
        const json document = {{"identity", {{"cards", {{"a", {{"name", std::string(text)}}}}}}}};
        EXPECT_THROW(make_terminal(parse_scenario(document)), ScenarioError);
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
