// qzctl's memory card commands against the default scenario's chips (slots 1 to 4).
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "e2e/child_process.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {

class MemcardQzctl : public ::testing::Test {
protected:
    ProgramRun qzctl(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {QZ_32_QZCTL, "--sim-serial", "--json", "memcard"});
        return run_program(arguments, {{"QZ_32_LOG_ROOT", (folder.path() / "no-log").string()}});
    }
    TempDir folder;
};

TEST_F(MemcardQzctl, DetectsWritesAndReadsWithThePsc) {
    const auto detected = qzctl({"detect", "-s", "2"});
    ASSERT_EQ(detected.exit_code, 0) << detected.err;
    EXPECT_EQ(nlohmann::json::parse(detected.out)["type"], "SLE4428");

    // Each run is a fresh simulator: the write presents the PSC in the same run.
    const auto refused = qzctl({"write", "-t", "sle4442", "-s", "1", "-o", "64", "-d", "4142"});
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_NE(refused.err.find("6982"), std::string::npos) << refused.err;
    const auto wrong = qzctl({"code", "-t", "sle4442", "-s", "1", "-k", "FFFFFE"});
    EXPECT_EQ(wrong.exit_code, 1);
    EXPECT_NE(wrong.err.find("tries left: 2"), std::string::npos) << wrong.err;

    const auto read = qzctl({"read", "-t", "sle4442", "-s", "1", "-o", "32", "-l", "4"});
    ASSERT_EQ(read.exit_code, 0) << read.err;
    EXPECT_EQ(nlohmann::json::parse(read.out)["data"], "515A3332");
    EXPECT_EQ(qzctl({"read", "-t", "sle4442", "-s", "1", "-o", "300"}).exit_code, 2);
}

}  // namespace
}  // namespace qz::test
