// Memory card scenarios with values a chip can't hold are refused, naming the place.
#include <gtest/gtest.h>

#include "sim/models/memcards/chip_config.h"

namespace qz::sim {
namespace {

using nlohmann::json;

TEST(MemoryCardsConfig, RefusesWhatNoChipHolds) {
    const struct {
        json chip;
        const char* message;
    } rows[] = {
        {{{"type", "sle5542"}}, "memory_cards.slots[0].type"},
        {{{"type", "sle4442"}, {"code", {{"hex", "12 34"}}}}, ".code: 3 bytes"},
        {{{"type", "sle4428"}, {"tries", 9U}}, ".tries: at most 8"},
        {{{"type", "at88sc102"}, {"tries", 5U}}, ".tries: at most 4"},
        {{{"type", "at24c01a"}, {"writes", {{{"at", 127U}, {"data", "AB"}}}}}, ".writes: beyond the 128 bytes"},
        {{{"type", "sle4442"}, {"protected", {32U}}}, ".protected: positions 0 to 31"},
        {{{"type", "at88sc102"}, {"erase_keys", {"12345", "123456"}}}, ".erase_keys: 6 bytes each"},
        {{{"type", "at88sc1604"}, {"answer", "A"}}, ".answer: 2 to 8 bytes"},
        {{{"type", "sle4442"}, {"colour", "red"}}, "colour"},
    };
    for (const auto& row : rows) {
        const json document{{"memory_cards", {{"slots", {row.chip}}}}};
        try {
            parse_memory_cards(document);
            ADD_FAILURE() << row.message;
        } catch (const ScenarioError& error) {
            EXPECT_NE(std::string(error.what()).find(row.message), std::string::npos) << error.what() << " | " << row.message;
        }
    }
    EXPECT_FALSE(parse_memory_cards(json::object()));
    EXPECT_TRUE(parse_memory_cards(json{{"memory_cards", {{"slots", {nullptr, {{"type", "sle4428"}}}}}}}));
}

}  // namespace
}  // namespace qz::sim
