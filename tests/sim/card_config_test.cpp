#include "sim/models/cards/card_config.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "card_test_helpers.h"
#include "sim/models/cards/atr.h"
#include "sim/models/cards/ber_tlv.h"
#include "sim/core/json_values.h"

namespace qz::sim {
namespace {

using nlohmann::json;
using test::Bytes;
using test::hex;

TEST(BerTlv, EncodesLengthsInTheShortestForm) {
    EXPECT_EQ(tlv(0x5A, hex("62 22")), hex("5A 02 62 22"));
    EXPECT_EQ(tlv(0x9F38, Bytes{}), hex("9F 38 00"));
    const Bytes long_value(0x80, 0xAB);
    const Bytes long_encoded = tlv(0x70, long_value);
    EXPECT_EQ(Bytes(long_encoded.begin(), long_encoded.begin() + 3), hex("70 81 80"));
    const Bytes longer(0x123, 0xCD);
    const Bytes encoded = tlv(0xBF0C, longer);
    EXPECT_EQ(Bytes(encoded.begin(), encoded.begin() + 5), hex("BF 0C 82 01 23"));
    EXPECT_EQ(encoded.size(), 5 + longer.size());
}

TEST(BerTlv, BuildsDataObjectsFromJson) {
    const json list = json::parse(R"([
        {"5A": {"hex": "62 22 8F"}},
        {"A5": [ {"50": "AB"}, {"BF0C": [ {"61": [ {"4F": {"hex": "A0 00 00 03 33"}} ]} ]} ]},
        {"9F0B": ""}
    ])");
    EXPECT_EQ(tlv_list(list, "x"),
              hex("5A 03 62 22 8F  A5 10 50 02 41 42 BF 0C 09 61 07 4F 05 A0 00 00 03 33  9F 0B 00"));
}

TEST(BerTlv, RefusesWhatIsNoDataObject) {
    const char* bad[] = {
        R"([{"5F": "x"}])",              // a tag that announces a second byte and lacks it
        R"([{"9F8": "x"}])",             // odd digits
        R"([{"5A": [ {"50": "x"} ]}])",  // a primitive tag holding a list
        R"([{"5A": "x", "50": "y"}])",   // two objects in one item
        R"({"5A": "x"})",                // not a list
        R"([{"ZZ": "x"}])",
    };
    for (const char* text : bad) EXPECT_THROW(tlv_list(json::parse(text), "x"), ScenarioError) << text;
}

TEST(BerTlv, FindsDataObjectsDepthFirst) {
    const Bytes data = hex("6F 10 84 02 AA BB A5 0A BF 0C 07 61 05 4F 03 A0 00 01  9F 38 81 01 77  90 00");
    EXPECT_EQ(find_tlv(data, 0x84), hex("AA BB"));
    EXPECT_EQ(find_tlv(data, 0x4F), hex("A0 00 01")) << "three templates deep";
    EXPECT_EQ(find_tlv(data, 0x61), hex("4F 03 A0 00 01")) << "a template that matches is not entered";
    EXPECT_EQ(find_tlv(data, 0x9F38), hex("77")) << "long form length";
    EXPECT_EQ(find_tlv(data, 0x90), Bytes{});
    EXPECT_FALSE(find_tlv(data, 0x5A));
    EXPECT_FALSE(find_tlv(hex("5A 05 01 02"), 0x5A)) << "value cut short";
    EXPECT_FALSE(find_tlv(hex("9F"), 0x9F38)) << "tag cut short";
    EXPECT_FALSE(find_tlv(hex("5A 84 FF FF FF FF 00"), 0x5A)) << "a length past the end";
}

TEST(BerTlv, SumsTheLengthsOfADol) {
    EXPECT_EQ(dol_length(hex("9F66 04 9F02 06 9F03 06 9F1A 02 95 05 5F2A 02 9A 03 9C 01 9F37 04")), 33u);
    EXPECT_EQ(dol_length(Bytes{}), 0u);
    EXPECT_EQ(dol_length(hex("DF 81 01 03")), 3u) << "a three-byte tag";
    EXPECT_FALSE(dol_length(hex("9F 66")));
    EXPECT_FALSE(dol_length(hex("9F 02 06 9F")));
}

TEST(Atr, NamesTheFirstProtocol) {
    struct Case {
        const char* atr;
        std::optional<unsigned> protocol;
    };
    const Case cases[] = {
        {"3B 6A 00 00 51 5A 33 32 20 44 45 42 49 54", 0u},              // TB1 TC1, no TD1
        {"3B 02 14 50", 0u},                                            // historical bytes only
        {"3B E9 00 00 81 31 FE 45 51 5A 33 32 20 54 31 20 43 CE", 1u},  // T=1 with TCK
        {"3B 80 80 01 01", 0u},                                         // TD1 T=0, TD2 T=1: TCK follows
        {"3F 00", 0u},
        {"3B 6A 00 00 51", std::nullopt},                                      // historical bytes missing
        {"3B E9 00 00 81 31 FE 45 51 5A 33 32 20 54 31 20 43", std::nullopt},  // TCK missing
        {"3B 80", std::nullopt},                                               // TD1 missing
        {"3A 00", std::nullopt},
        {"3B", std::nullopt},
    };
    for (const Case& test_case : cases)
        EXPECT_EQ(atr_protocol(hex(test_case.atr)), test_case.protocol) << test_case.atr;
}

TEST(CardConfig, DefaultsFollowTheLocation) {
    const CardConfig contact = parse_card(json::object(), CardLocation::slot, "c");
    EXPECT_EQ(contact.rules, ResponseRules::t0);
    ASSERT_TRUE(contact.emv.directory);
    EXPECT_EQ(contact.emv.directory->name,
              Bytes({'1', 'P', 'A', 'Y', '.', 'S', 'Y', 'S', '.', 'D', 'D', 'F', '0', '1'}));
    EXPECT_EQ(contact.emv.directory->sfi, 1);

    const CardConfig contactless = parse_card(json::object(), CardLocation::field, "c");
    EXPECT_EQ(contactless.rules, ResponseRules::direct);
    ASSERT_TRUE(contactless.emv.directory);
    EXPECT_EQ(contactless.emv.directory->name[0], '2');
    EXPECT_FALSE(contactless.emv.directory->sfi);
    EXPECT_EQ(contactless.face.ats[0], contactless.face.ats.size()) << "TL counts the whole ATS";

    EXPECT_EQ(parse_card(json::parse(R"({"responses": "t0"})"), CardLocation::field, "c").rules, ResponseRules::t0);
    EXPECT_EQ(parse_card(json::parse(R"({"atr": {"hex": "3B E9 00 00 81 31 FE 45 51 5A 33 32 20 54 31 20 43 CE"}})"),
                         CardLocation::slot, "c")
                  .rules,
              ResponseRules::direct);
    EXPECT_FALSE(parse_card(json::parse(R"({"directory": null})"), CardLocation::slot, "c").emv.directory);
}

TEST(CardConfig, ErrorsNameThePlace) {
    struct Case {
        const char* card;
        CardLocation location;
        const char* place;
    };
    const Case cases[] = {
        {R"({"atr": {"hex": "3B 6A 00"}})", CardLocation::slot, "c.atr"},
        {R"({"responses": "t0"})", CardLocation::slot, "c.responses"},
        {R"({"responses": "t1"})", CardLocation::field, "c.responses"},
        {R"({"uid": ""})", CardLocation::field, "c.uid"},
        {R"({"response_chunk": 0})", CardLocation::field, "c.response_chunk"},
        {R"({"response_chunk": 257})", CardLocation::field, "c.response_chunk"},
        {R"({"colour": 1})", CardLocation::field, "c"},
        {R"({"directory": {"sfi": 31}})", CardLocation::slot, "c.directory.sfi"},
        {R"({"applications": [{}]})", CardLocation::field, "c.applications[0]"},
        {R"({"applications": [{"aid": {"hex": "A0 00 00 03"}}]})", CardLocation::field, "c.applications[0].aid"},
        {R"({"applications": [{"aid": {"hex": "A0 00 00 03 33"}, "pdol": {"hex": "9F 02"}}]})", CardLocation::field,
         "c.applications[0].pdol"},
        {R"({"applications": [{"aid": {"hex": "A0 00 00 03 33"}, "gpo": {"afl": {"hex": "08 01 01"}}}]})",
         CardLocation::field, "c.applications[0].gpo.afl"},
        {R"({"applications": [{"aid": {"hex": "A0 00 00 03 33"}, "gpo": {"format": 3}}]})", CardLocation::field,
         "c.applications[0].gpo.format"},
        {R"({"applications": [{"aid": {"hex": "A0 00 00 03 33"}, "gpo": {"data": [{"57": "x"}]}}]})",
         CardLocation::field, "c.applications[0].gpo.data"},
        {R"({"applications": [{"aid": {"hex": "A0 00 00 03 33"}, "records": [{"sfi": 1, "record": 1}]}]})",
         CardLocation::field, "c.applications[0].records[0]"},
        {R"({"applications": [{"aid": {"hex": "A0 00 00 03 33"}, "records": [
            {"sfi": 1, "record": 1, "raw": "x"}, {"sfi": 1, "record": 1, "refuse": "0x6985"}]}]})",
         CardLocation::field, "c.applications[0].records[1]"},
        {R"({"applications": [{"aid": {"hex": "A0 00 00 03 33"}, "records": [{"sfi": 0, "record": 1, "raw": "x"}]}]})",
         CardLocation::field, "c.applications[0].records[0].sfi"},
        {R"({"file": "cards/none.json"})", CardLocation::field, "c.file"},
    };
    for (const Case& test_case : cases) {
        SCOPED_TRACE(test_case.card);
        try {
            parse_card(json::parse(test_case.card), test_case.location, "c");
            ADD_FAILURE() << "accepted";
        } catch (const ScenarioError& error) {
            EXPECT_EQ(std::string(error.what()).rfind(test_case.place, 0), 0u) << error.what();
        }
    }
}

TEST(CardConfig, SectionOfTheScenario) {
    EXPECT_FALSE(parse_cards(json::object()));
    const auto cards = parse_cards(json::parse(R"({"cards": {"field": null, "slots": [null, {}]}})"));
    ASSERT_TRUE(cards);
    EXPECT_FALSE(cards->field);
    EXPECT_FALSE(cards->slots[0]);
    EXPECT_TRUE(cards->slots[1]);
    EXPECT_THROW(parse_cards(json::parse(R"({"cards": {"slots": [null, null, null, null, null, null]}})")),
                 ScenarioError);
    EXPECT_THROW(parse_cards(json::parse(R"({"cards": {"reader": {}}})")), ScenarioError);
}

TEST(CardConfig, EveryShippedProfileLoadsWhereItBelongs) {
    int profiles = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(QZ_32_SIM_SCENARIO_DIR) / "cards")) {
        const std::string name = entry.path().stem().string();
        SCOPED_TRACE(name);
        const CardLocation location = name.starts_with("contactless_") ? CardLocation::field : CardLocation::slot;
        const CardConfig card = parse_card(test::card_profile(name), location, name);
        EXPECT_FALSE(card.emv.applications.empty());
        ++profiles;
    }
    EXPECT_GE(profiles, 10);

    const auto scenario = load_scenario(std::filesystem::path(QZ_32_SIM_SCENARIO_DIR) / "default.json");
    const auto cards = parse_cards(scenario.document);
    ASSERT_TRUE(cards);
    EXPECT_TRUE(cards->field);
    EXPECT_TRUE(cards->slots[0]);
}

}  // namespace
}  // namespace qz::sim
