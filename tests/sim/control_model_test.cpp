#include "sim/models/control/control_model.h"

#include <gtest/gtest.h>

#include "sim/core/status.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

class ControlModelTest : public ::testing::Test {
protected:
    ControlModelTest() {
        scenario.control.version = hex("56 31");
        scenario.control.registration_number = hex("52 45 47");
        scenario.control.serial_number[0] = 'S';
        scenario.control.serial_number[19] = 'Z';
        scenario.control.eeprom = Bytes(256, 0xFF);
        scenario.shared.card_state = 2;
        terminal = make_terminal(scenario);
        control = terminal->model<ControlModel>();
    }

    Reply run(std::string_view payload) { return terminal->execute(hex(payload)); }

    Scenario scenario;
    std::shared_ptr<Terminal> terminal;
    ControlModel* control = nullptr;
};

struct Exchange {
    const char* payload;
    std::uint16_t status;
    const char* data;
};

TEST_F(ControlModelTest, AnswersEachCommand) {
    const Exchange exchanges[] = {
        {"00 01 00", status::ok, "56 31"},
        {"00 07 00", status::ok, "02"},
        {"00 0F 00", status::ok, "52 45 47"},
        {"00 09 00 01", status::ok, "53"},
        {"00 09 00 14", status::ok, "53 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 5A"},
        {"00 04 00 04", status::ok, ""},
        {"00 03 00 01", status::ok, ""},
        {"00 02 00 03 02 01", status::ok, ""},
        {"00 0B 00 00 00 02", status::ok, "FF FF"},
        // out of range
        {"00 04 00 05", status::out_of_range, ""},
        {"00 09 00 00", status::out_of_range, ""},
        {"00 09 00 15", status::out_of_range, ""},
        // wrong length
        {"00 01", status::wrong_length, ""},
        {"00 01 00 00", status::wrong_length, ""},
        {"00 02 00 01 01", status::wrong_length, ""},
        {"00 08 00 14 01", status::wrong_length, ""},
        {"00 0B 00 00 00", status::wrong_length, ""},
        // not served
        {"00 05 00", status::instruction_unknown, ""},
        {"5A 01 00", status::class_unknown, ""},
        {"00", status::damaged_request, ""},
    };
    for (const Exchange& exchange : exchanges) {
        const Reply reply = run(exchange.payload);
        EXPECT_EQ(reply.status, exchange.status) << exchange.payload;
        EXPECT_EQ(reply.data, hex(exchange.data)) << exchange.payload;
    }
}

TEST_F(ControlModelTest, RecordsWhatTheHostSet) {
    EXPECT_TRUE(control->beeps().empty());
    EXPECT_FALSE(control->speed_code());
    run("00 02 00 03 02 01");
    run("00 02 00 01 01 01");
    run("00 04 00 02");
    run("00 04 00 09");  // refused, not recorded
    run("00 03 00 07");
    ASSERT_EQ(control->beeps().size(), 2u);
    EXPECT_EQ(control->beeps()[0], (ControlModel::Beep{3, 2, 1}));
    EXPECT_EQ(control->speed_code(), 2);
    EXPECT_EQ(control->display_mode(), 7);
}

TEST_F(ControlModelTest, CardStateFollowsTheSharedState) {
    terminal->shared().card_state = 5;
    EXPECT_EQ(run("00 07 00").data, hex("05"));
}

TEST_F(ControlModelTest, SerialNumberWrittenIsReadBack) {
    Bytes write = hex("00 08 00 14");
    const Bytes serial = test::pattern(20, 0x30);
    write.insert(write.end(), serial.begin(), serial.end());
    ASSERT_EQ(terminal->execute(write).status, status::ok);
    EXPECT_EQ(run("00 09 00 14").data, serial);
    EXPECT_EQ(run("00 09 00 06").data, Bytes(serial.begin(), serial.begin() + 6));

    write[3] = 0x13;  // the field is always 20 bytes
    EXPECT_EQ(terminal->execute(write).status, status::wrong_length);
    EXPECT_EQ(run("00 09 00 14").data, serial);
}

TEST_F(ControlModelTest, EepromIsWordAddressedAndKeepsWhatIsWritten) {
    // Word 3 is bytes 6 and 7.
    ASSERT_EQ(run("00 0A 00 03 00 04 A1 A2 A3 A4").status, status::ok);
    EXPECT_EQ(run("00 0B 00 02 00 08").data, hex("FF FF A1 A2 A3 A4 FF FF"));
    EXPECT_EQ(Bytes(control->eeprom().begin() + 6, control->eeprom().begin() + 10), hex("A1 A2 A3 A4"));

    ASSERT_EQ(run("00 0A 00 04 00 02 B1 B2").status, status::ok);  // overwrites bytes 8 and 9
    ASSERT_EQ(run("00 01 00").status, status::ok);                  // other commands in between
    EXPECT_EQ(run("00 0B 00 03 00 04").data, hex("A1 A2 B1 B2"));
}

TEST_F(ControlModelTest, EepromRangeIsChecked) {
    // The EEPROM of this scenario holds 256 bytes: words 0 to 127.
    EXPECT_EQ(run("00 0B 00 7F 00 02").data, hex("FF FF"));
    EXPECT_EQ(run("00 0B 00 00 01 00").data.size(), 256u);
    const Exchange refused[] = {
        {"00 0B 00 80 00 02", status::out_of_range, ""},
        {"00 0B 00 7F 00 04", status::out_of_range, ""},
        {"00 0B 00 00 01 02", status::out_of_range, ""},
        {"00 0B 00 00 00 03", status::out_of_range, ""},        // odd count
        {"00 0A 00 80 00 02 01 02", status::out_of_range, ""},
        {"00 0A 00 00 00 01 01", status::out_of_range, ""},     // odd count
        {"00 0A 00 00 00 04 01 02", status::wrong_length, ""},  // fewer data than announced
        {"00 0A 00 00 00 02 01 02 03", status::wrong_length, ""},
        {"00 0A 00 00", status::wrong_length, ""},
    };
    for (const Exchange& exchange : refused) {
        const Reply reply = run(exchange.payload);
        EXPECT_EQ(reply.status, exchange.status) << exchange.payload;
        EXPECT_TRUE(reply.data.empty()) << exchange.payload;
    }
    EXPECT_EQ(Bytes(control->eeprom().begin(), control->eeprom().end()), Bytes(256, 0xFF)) << "a refused write wrote";
}

TEST(ControlModel, FullSizeEepromReachesEveryWord) {
    const auto terminal = make_terminal(Scenario{});
    ASSERT_EQ(terminal->execute(hex("00 0A 00 FF 00 02 5A A5")).status, status::ok);
    EXPECT_EQ(terminal->execute(hex("00 0B 00 FE 00 04")).data, hex("FF FF 5A A5"));
    // Offset 200, 200 bytes: the largest read the library asks for.
    EXPECT_EQ(terminal->execute(hex("00 0B 00 64 00 C8")).data.size(), 200u);
}

}  // namespace
}  // namespace qz::sim
