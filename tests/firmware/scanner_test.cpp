// The scanner's upgrade and both routes of the two-dimensional read against the
// simulated scanner.
#include <array>
#include <cstring>

#include "firmware/crc16.h"
#include "sim/models/scanner/scanner_model.h"
#include "sim_fixture.h"

namespace qz::test {
namespace {

struct Progress {
    int total, current, status;
    bool operator==(const Progress&) const = default;
};
std::vector<Progress> progress;
int record_progress(int total, int current, int status) {
    progress.push_back({total, current, status});
    return 0;
}

class Scanner : public SimTerminal {
protected:
    void SetUp() override { progress.clear(); }
    sim::ScannerModel& scanner() { return sim->model<sim::ScannerModel>(); }
    int upgrade(const std::string& bytes) {
        return upgrade_scaner(icdev, write_file("scanner.bin", bytes).c_str(), record_progress);
    }
};

TEST(ScannerCrc, CheckValueOfTheStandardString) {
    const std::string text = "123456789";
    EXPECT_EQ(firmware::crc16_packet(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size())),
              0x31C3);
}

TEST_F(Scanner, UpgradeFillsTheLastPackageAndReportsEachStep) {
    start({});
    std::string file(257, '\0');
    for (std::size_t i = 0; i < file.size(); ++i) file[i] = static_cast<char>(i * 13 + 1);
    const std::uint32_t before = tick_ms();
    ASSERT_EQ(upgrade(file), 0);
    EXPECT_EQ(progress, (std::vector<Progress>{{2, 0, 0}, {2, 1, 0}, {2, 2, 0}}));
    Bytes expected(file.begin(), file.end());
    expected.resize(512, 0x00);
    EXPECT_EQ(scanner().loader().firmware(), expected);
    EXPECT_FALSE(scanner().loader().running());
    EXPECT_GE(tick_ms() - before, 1500u + 4 * 60u + 2 * 5u);

    unsigned length = 0;
    unsigned char version[64] = {};
    ASSERT_EQ(GetScanerVer(icdev, &length, version), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(version), length), "QZSCAN V2.00");
    EXPECT_EQ(timeouts(), std::make_pair(5000u, 0u));
}

TEST_F(Scanner, EmptyFileSendsNoPackageButLeaves) {
    start({});
    EXPECT_EQ(upgrade(""), 0);
    EXPECT_EQ(progress, (std::vector<Progress>{{0, 0, 0}}));
    EXPECT_EQ(scanner().loader().packages_taken(), 0u);
    EXPECT_FALSE(scanner().loader().running());
}

TEST_F(Scanner, FirstRefusedOrUnansweredPackageEndsTheUpgrade) {
    struct Case {
        const char* fault;
        int result;
    };
    for (const Case& c : {Case{"refuse_package", -96}, Case{"silent_after_package", -17}}) {
        SCOPED_TRACE(c.fault);
        progress.clear();
        start({{"scanner", {{c.fault, 2u}}}});
        EXPECT_EQ(upgrade(std::string(256 * 4, 'x')), c.result);
        const int failed_at = c.result == -96 ? 2 : 3;
        EXPECT_EQ(progress.back(), (Progress{4, failed_at, c.result}));
        EXPECT_EQ(progress.size(), static_cast<std::size_t>(failed_at + 1));
        EXPECT_TRUE(scanner().loader().running()) << "an early exit leaves the scanner in its loader";
    }
}

TEST_F(Scanner, MissingFileLeavesTheScannerInItsLoader) {
    start({});
    EXPECT_EQ(upgrade_scaner(icdev, (folder.path() / "none.bin").c_str(), nullptr), -89);
    EXPECT_TRUE(scanner().loader().running());
}

TEST_F(Scanner, TwoDimensionCodeByBothRoutes) {
    struct Case {
        nlohmann::json scanner;
        const char* route;
    };
    const std::vector<Case> cases{
        {{{"codes", {"QR-CODE-1"}}}, "direct"},
        {{{"version", nullptr}, {"codes", {"QR-CODE-1"}}}, "polled, code with the acknowledgement"},
        {{{"version", nullptr}, {"codes", {"QR-CODE-1"}}, {"acknowledge_apart", true}, {"polls_before_code", 3u}},
         "polled, acknowledgement apart after failed polls"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.route);
        start({{"scanner", c.scanner}});
        std::array<char, 1024> text{};
        ASSERT_EQ(GetTwoDimensionCode(icdev, 3, text.data()), 0);
        EXPECT_STREQ(text.data(), "QR-CODE-1");
        EXPECT_EQ(timeouts(), std::make_pair(5000u, 0u));
    }
}

TEST_F(Scanner, PolledReadGivesUpAfterTwentyFiveSeconds) {
    start({{"scanner", {{"version", nullptr}}}});
    std::array<char, 16> text{};
    text[0] = 'k';
    const std::uint32_t before = tick_ms();
    EXPECT_EQ(GetTwoDimensionCode(icdev, 30, text.data()), static_cast<std::int16_t>(-0x6400));
    EXPECT_GE(tick_ms() - before, 25000u);
    EXPECT_LT(tick_ms() - before, 26000u);
    EXPECT_EQ(text[0], 'k');
    EXPECT_EQ(GetTwoDimensionCode(icdev, 0, text.data()), -19);
}

}  // namespace
}  // namespace qz::test
