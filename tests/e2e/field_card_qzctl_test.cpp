// qzctl's contactless memory card commands against the shipped card profiles.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "e2e/child_process.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

class FieldCardQzctl : public ::testing::Test {
protected:
    ProgramRun qzctl(const std::string& profile, std::vector<std::string> arguments) {
        const std::string scenario = std::string(QZ_32_SIM_SCENARIO_DIR) + "/" + profile;
        arguments.insert(arguments.begin(), {QZ_32_QZCTL, "--sim-serial", "--scenario", scenario, "--json"});
        return run_program(arguments, {{"QZ_32_LOG_ROOT", (folder.path() / "no-log").string()}});
    }
    TempDir folder;
};

TEST_F(FieldCardQzctl, SectorValuesKeysAndPages) {
    const auto value = qzctl("sector_card.json", {"mifare", "value", "-b", "5", "-k", "A0A1A2A3A4A5", "--dec", "10"});
    ASSERT_EQ(value.exit_code, 0) << value.err;
    EXPECT_EQ(nlohmann::json::parse(value.out)["value"], 90);
    const auto wrong = qzctl("sector_card.json", {"mifare", "read", "-s", "1"});  // the factory key
    EXPECT_EQ(wrong.exit_code, 1);
    EXPECT_NE(wrong.err.find("6300"), std::string::npos) << wrong.err;
    EXPECT_EQ(qzctl("sector_card.json", {"mifare", "write", "-b", "4", "-d", "0011"}).exit_code, 2);

    const auto pages = qzctl("ultralight_card.json", {"ultralight", "read", "-p", "4", "-n", "2"});
    ASSERT_EQ(pages.exit_code, 0) << pages.err;
    EXPECT_EQ(nlohmann::json::parse(pages.out)["data"], "515A333220554C54");
}

}  // namespace
}  // namespace qz::test
