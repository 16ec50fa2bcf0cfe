#include <gtest/gtest.h>

#include <array>
#include <string>

#include "card_fixture.h"
#include "qz_32.h"
#include "support/temp_dir.h"

namespace qz::test {
namespace {
namespace fs = std::filesystem;

class ExchangeProTest : public CardTest {
protected:
    std::string log_text() { return file_text(root / "20261123" / "qz3log10.txt"); }
    static std::string record(const std::string& message) { return "[10:00:00:0]==> " + message + "\r\r\n\r\r\n"; }

    TempDir dir;
    fs::path root = dir.path() / "QZlog";
    ScopedEnv env{"QZ_32_LOG_ROOT", root.string()};
    std::array<std::uint8_t, 400> response{};
    unsigned short response_length = 0xEEEE;
};

const Bytes select_apdu{0x00, 0xA4, 0x04, 0x00, 0x02, 0x3F, 0x00};

// Status words are the caller's business: a 61xx reply is handed over, nothing follows.
TEST_F(ExchangeProTest, OneExchangeWithTheApduBehindC13100) {
    answer({{0x6F, 0x01, 0x61, 0x10}});
    ASSERT_EQ(ExchangePro(icdev, select_apdu.data(), 7, response.data(), &response_length), 0);
    EXPECT_EQ(payloads(), (std::vector<Bytes>{concat({{0xC1, 0x31, 0x00}, select_apdu})}));
    EXPECT_EQ(response_length, 4);
    EXPECT_EQ(Bytes(response.begin(), response.begin() + 4), (Bytes{0x6F, 0x01, 0x61, 0x10}));
}

// The traffic is logged in GBK labels and hex; a failure logs an empty reply and
// leaves the response empty.
TEST_F(ExchangeProTest, LogsTheTrafficAndFailureLeavesTheResponseEmpty) {
    fs::create_directory(root);
    answer({{0x90, 0x00}});
    replies.push_back(make_reply(0x6A82, {0x90, 0x00}));
    ASSERT_EQ(ExchangePro(icdev, select_apdu.data(), 7, response.data(), &response_length), 0);
    response.fill(0x55);
    EXPECT_EQ(ExchangePro(icdev, select_apdu.data(), 7, response.data(), &response_length), -27266);
    EXPECT_EQ(response_length, 0);
    EXPECT_EQ(response[0], 0x55);
    const auto exchange = [this](const std::string& reply, const std::string& result) {
        return record("ExchangePro(icdev == " + std::to_string(icdev) + ")") + record("\xB7\xA2\xCB\xCD:") +
               record("00A40400023F00") + record("\xBD\xD3\xCA\xD5:") + record(reply) +
               record("ExchangePro(return == " + result + ")");
    };
    EXPECT_EQ(log_text(), exchange("9000", "0") + exchange("", "-27266"));
}

// A zero length is refused after the first log record.
TEST_F(ExchangeProTest, SizeLimitsOfApduAndReply) {
    fs::create_directory(root);
    EXPECT_EQ(ExchangePro(icdev, select_apdu.data(), 0, response.data(), &response_length), -19);
    EXPECT_EQ(log_text(), record("ExchangePro(icdev == " + std::to_string(icdev) + ")"));
    const Bytes longest(297, 0x01);
    const Bytes too_long(298, 0x01);
    answer({Bytes(300, 0x42)});
    EXPECT_EQ(ExchangePro(icdev, longest.data(), 297, response.data(), &response_length), 0);
    EXPECT_EQ(response_length, 300);
    EXPECT_EQ(ExchangePro(icdev, too_long.data(), 298, response.data(), &response_length), -19);
    EXPECT_EQ(os.requests.size(), 1u);

    answer({Bytes(301, 0x42)});
    response.fill(0);
    EXPECT_EQ(ExchangePro(icdev, longest.data(), 297, response.data(), &response_length), -38);
    EXPECT_EQ(response_length, 0);
    EXPECT_EQ(response[0], 0);
}

TEST_F(ExchangeProTest, HexTwinConvertsBothWaysWithoutLogging) {
    fs::create_directory(root);
    struct Case {
        const char* command;
        Bytes sent;  // nothing: no request
        int result;
    };
    const Case cases[] = {
        {"00a40400023F00", select_apdu, 0},
        {"00A40400023F001", select_apdu, 0},  // the odd digit is dropped
        {"00A4G4", {}, -1},
        {"", {}, -19},
        {"0", {}, -19},
    };
    for (const Case& c : cases) {
        os.requests.clear();
        answer({{0x6A, 0x82}});
        std::array<char, 64> text{};
        text.fill('z');
        EXPECT_EQ(ExchangePro_hex(icdev, c.command, text.data()), c.result) << c.command;
        if (c.sent.empty()) {
            EXPECT_TRUE(os.requests.empty()) << c.command;
            EXPECT_EQ(text[0], 'z');
            replies.clear();
        } else {
            EXPECT_EQ(payloads(), (std::vector<Bytes>{concat({{0xC1, 0x31, 0x00}, c.sent})}));
            EXPECT_STREQ(text.data(), "6A82");
        }
    }
    EXPECT_FALSE(fs::exists(root / "20261123" / "qz3log10.txt"));
}

}  // namespace
}  // namespace qz::test
