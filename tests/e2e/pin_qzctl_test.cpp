// qzctl's PIN commands against a simulator of their own, started with --sim-serial:
// the keypad's protected entry and the external pad's PIN block, deciphered.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "e2e/child_process.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

// The default scenario's keypad types 246810 first, its pad 123456 under work key 0.
constexpr const char* pad_work_key_0 = "3C5A6996A5C30FF0123456789ABCDEF0";

class PinQzctl : public ::testing::Test {
protected:
    ProgramRun qzctl(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {QZ_32_QZCTL, "--sim-serial", "--json"});
        return run_program(arguments, {{"QZ_32_LOG_ROOT", (folder.path() / "no-log").string()}});
    }
    TempDir folder;
};

TEST_F(PinQzctl, ProtectedKeypadEntryPrintsTheKeyedPin) {
    const auto run = qzctl({"pin"});
    ASSERT_EQ(run.exit_code, 0) << run.err;
    const auto result = nlohmann::json::parse(run.out);
    EXPECT_EQ(result["pin"], "246810");
    EXPECT_EQ(result["data"], "3234363831300000");
    EXPECT_NE(run.err.find("Key the PIN"), std::string::npos) << "the wait is shown on stderr";
}

TEST_F(PinQzctl, PadEntryGivesABlockThatDeciphersToTheKeyedPin) {
    const auto run = qzctl({"pinpad", "enter", "-k", pad_work_key_0, "-d", "123456789012"});
    ASSERT_EQ(run.exit_code, 0) << run.err;
    const auto result = nlohmann::json::parse(run.out);
    EXPECT_EQ(result["block"].get<std::string>().size(), 16u);
    EXPECT_EQ(result["pin"], "123456");

    const auto wrong_key = qzctl({"pinpad", "enter", "-k", "0B162C58B061C285"});
    EXPECT_EQ(wrong_key.exit_code, 1);
    const auto missing_key = qzctl({"pinpad", "enter", "-n", "9"});
    EXPECT_EQ(missing_key.exit_code, 1);
    EXPECT_NE(missing_key.err.find("6A88"), std::string::npos) << missing_key.err;
    EXPECT_EQ(qzctl({"pinpad", "enter", "-d", "12345"}).exit_code, 2);
}

}  // namespace
}  // namespace qz::test
