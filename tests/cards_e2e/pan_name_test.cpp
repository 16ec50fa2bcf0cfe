// The library's CPU card sessions and bank card reading against the simulated
// cards of every profile, counting the APDUs the library's walk spends.
#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <string>

#include "qz_32.h"
#include "sim/models/cards/card_reader_model.h"
#include "support/payloads.h"
#include "support/simulated_terminal.h"

namespace qz::test {
namespace {

using nlohmann::json;
using sim::CardLocation;

constexpr int walk_refused = -19;
constexpr int tag_missing = -21;

Bytes text(std::string_view characters) { return {characters.begin(), characters.end()}; }

// A scenario holding only the card of `profile`, in the field or in slot 0.
json scenario_with(const std::string& profile, CardLocation location) {
    const json card = {{"file", "cards/" + profile + ".json"}};
    return location == CardLocation::field ? json{{"cards", {{"field", card}}}}
                                           : json{{"cards", {{"slots", json::array({card})}}}};
}

struct PanAndName {
    int result;
    std::string pan;
    Bytes name;
};

// The export of the path given.
PanAndName read(int icdev, CardLocation location) {
    std::array<unsigned char, 1024> pan{};
    std::array<unsigned char, 1024> name{};
    unsigned short pan_length = 0;
    unsigned short name_length = 0;
    int result = 0;
    if (location == CardLocation::field)
        result = NC_GetPanNoCardHldName(icdev, pan.data(), &pan_length, name.data(), &name_length);
    else
        result = ICC_GetPanNoCardHldName(icdev, 0, pan.data(), &pan_length, name.data(), &name_length);
    return {result, std::string(reinterpret_cast<const char*>(pan.data()), pan_length),
            Bytes(name.begin(), name.begin() + name_length)};
}

struct ProfileCase {
    const char* profile;
    CardLocation location;
    int result;
    std::string pan;
    Bytes name;
    std::size_t apdus;  // what the walk sends
};

void PrintTo(const ProfileCase& test_case, std::ostream* out) { *out << test_case.profile; }

const Bytes zhang_sanfeng_gbk{0xD5, 0xC5, 0xC8, 0xFD, 0xB7, 0xE1};

// APDU counts: on T=0 a command with data costs one GET RESPONSE more (more with
// 32-byte chunks), a READ RECORD with Le 00 one repeat after 6Cxx.
const ProfileCase profile_cases[] = {
    {"contactless_qpboc", CardLocation::field, 0, "6222021234567894", text("ZHANG/SAN"), 3},
    {"contactless_long_name", CardLocation::field, 0, "6222025678901238", zhang_sanfeng_gbk, 5},
    // The name is optional once the GPO reply had none: the walk stops at the PAN.
    {"contactless_name_late", CardLocation::field, 0, "6222021234567894", {}, 4},
    {"contactless_t0_style", CardLocation::field, 0, "6222021234567894", text("SUN/BA"), 10},
    {"contactless_no_name", CardLocation::field, 0, "6222025678901238", {}, 3},
    // The first application listed, not the one of highest priority.
    {"contactless_two_apps", CardLocation::field, 0, "6258079988776654", text("ZHANG/SAN"), 3},
    // Its PDOL answer lacks the 20 bytes of 9F4E: the card refuses GPO with 6700.
    {"contactless_pdol_outside_table", CardLocation::field, walk_refused, "", {}, 3},
    {"contact_pboc", CardLocation::slot, 0, "6222025678901238", text("LI/SI"), 12},
    {"contact_name_late", CardLocation::slot, 0, "6222021234567894", text("ZHANG/SAN"), 16},
    {"contact_pan_padded", CardLocation::slot, 0, "6222021234567890128", text("ZHAO/LIU"), 5},
    // Format 2 read as format 1: AIP, tag and length make one more READ RECORD (refused).
    {"contact_chained", CardLocation::slot, 0, "6228480011223341", text("CHEN/QI"), 17},
    {"contact_no_pdol", CardLocation::slot, tag_missing, "", {}, 6},
    // The refused record ends its AFL entry, and the name behind it is never read.
    {"contact_refused_records", CardLocation::slot, tag_missing, "6222021234567894", {}, 12},
    {"contact_no_directory", CardLocation::slot, walk_refused, "", {}, 1},
};

class Profiles : public ::testing::TestWithParam<ProfileCase> {};

TEST_P(Profiles, PanNameAndTheApdusSpent) {
    const ProfileCase& test_case = GetParam();
    SimulatedTerminal connection(scenario_with(test_case.profile, test_case.location));
    ASSERT_GT(connection.icdev, 1);

    const auto got = read(connection.icdev, test_case.location);
    EXPECT_EQ(got.result, test_case.result);
    EXPECT_EQ(got.pan, test_case.pan);
    EXPECT_EQ(got.name, test_case.name);
    const auto& readers = connection.model<sim::CardReaderModel>();
    EXPECT_EQ(readers.place(test_case.location).card()->received().size(), test_case.apdus);
}

INSTANTIATE_TEST_SUITE_P(CardsEndToEnd, Profiles, ::testing::ValuesIn(profile_cases),
                         [](const auto& info) { return std::string(info.param.profile); });

}  // namespace
}  // namespace qz::test
