// qzctl names every link status that the public header lists in words of its
// own, not as a terminal's status word.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "status_text.h"

namespace {

TEST(QzctlStatusText, EveryLinkStatusOfTheHeaderHasWords) {
    std::ifstream header(QZ_32_HEADER);
    const std::regex listed(R"(^ \*   (-\d+) )");
    std::vector<int> statuses;
    for (std::string line; std::getline(header, line);)
        if (std::smatch match; std::regex_search(line, match, listed)) statuses.push_back(std::stoi(match[1]));
    ASSERT_EQ(statuses.size(), 17u) << "the header's list of link statuses changed shape";
    for (const int status : statuses) {
        const std::string text = qzctl::status_text(status);
        EXPECT_EQ(text.find("terminal status"), std::string::npos) << text;
        EXPECT_NE(text.find(" (" + std::to_string(status) + ")"), std::string::npos) << text;
    }
    EXPECT_EQ(qzctl::status_text(-39), "reply shorter than the command needs (-39)");
}

}  // namespace
