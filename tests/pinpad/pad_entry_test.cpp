#include <array>
#include <functional>
#include <string>

#include "pin_fixture.h"
#include "pinpad/pad_entry.h"
#include "qz_32.h"

namespace qz::test {
namespace {

const Bytes card{0x12, 0x34, 0x56, 0x78, 0x90, 0x12};

// An entry export called with output buffers of the test's.
using Entry = std::function<int(int icdev, unsigned char* rlen, unsigned char* rdata)>;

struct Form {
    std::string name;
    Entry call;
    Bytes payload;
    bool records_key = false;  // sets the current work key to 0x2B on success
};

std::vector<Form> every_form() {
    const unsigned char* c = card.data();
    const Bytes esc_i{0x1B, 0x49};
    const Bytes esc_e{0x1B, 0x45};
    const Bytes key_card = concat({{0x2B, 0x00, 0x00}, card});
    return {
        {"getpwd", [](int d, auto l, auto r) { return pwdkb_getpwd(d, l, r); }, concat({{0xC5, 0x05, 0x00}, esc_i})},
        {"getpwd_again", [](int d, auto l, auto r) { return pwdkb_getpwd_again(d, l, r); },
         concat({{0xC5, 0x05, 0x00}, esc_e})},
        {"getpwd2", [](int d, auto l, auto r) { return pwdkb_getpwd2(d, l, r); }, concat({{0xC5, 0x09, 0x00}, esc_i})},
        {"getpwd_again2", [](int d, auto l, auto r) { return pwdkb_getpwd_again2(d, l, r); },
         concat({{0xC5, 0x09, 0x00}, esc_e})},
        {"getpwd_new2", [](int d, auto l, auto r) { return pwdkb_getpwd_new2(d, 2, l, r); },
         {0xC5, 0x09, 0x00, 0x1B, 0x48, '2', 0x0D, 0x0A}},
        {"getpwd_new2_WaitNextKeyPress", [](int d, auto l, auto r) { return pwdkb_getpwd_new2_WaitNextKeyPress(d, l, r); },
         {0xC5, 0x09, 0x00, 0x00}},
        {"getpwd_encrypt", [c](int d, auto l, auto r) { return pwdkb_getpwd_encrypt(d, 0x2B, c, l, r); },
         concat({{0xC5, 0x06, 0x00}, esc_i, key_card}), true},
        {"getpwd_again_encrypt", [c](int d, auto l, auto r) { return pwdkb_getpwd_again_encrypt(d, 0x2B, c, l, r); },
         concat({{0xC5, 0x06, 0x00}, esc_e, key_card}), true},
        {"getpwd_encrypt2", [c](int d, auto l, auto r) { return pwdkb_getpwd_encrypt2(d, 0x2B, c, l, r); },
         concat({{0xC5, 0x0A, 0x00}, esc_i, key_card}), true},
        {"getpwd_again_encrypt2", [c](int d, auto l, auto r) { return pwdkb_getpwd_again_encrypt2(d, 0x2B, c, l, r); },
         concat({{0xC5, 0x0A, 0x00}, esc_e, key_card}), true},
        {"getpwd_encrypt_new2", [c](int d, auto l, auto r) { return pwdkb_getpwd_encrypt_new2(d, 0x2B, c, 3, l, r); },
         concat({{0xC5, 0x0A, 0x00, 0x1B, 0x48, '1'}, key_card}), true},
        {"getpwd_encrypt_new2_WaitNextKeyPress",
         [](int d, auto l, auto r) { return pwdkb_getpwd_encrypt_new2_WaitNextKeyPress(d, l, r); },
         {0xC5, 0x0A, 0x00, 0x00}},
    };
}

class PadEntry : public PinTest {
protected:
    std::array<unsigned char, 64> rdata{};
    unsigned char rlen = 0;
};

TEST_F(PadEntry, EveryFormSendsItsPayloadAndHandsOverTheReply) {
    open_gates();
    answer_with({0xC1, 0xC2, 0xC3});
    for (const Form& form : every_form()) {
        pinpad::pad_state().pwdkb_work_index = 5;
        rdata.fill(0);
        rlen = 0;
        ASSERT_EQ(form.call(icdev, &rlen, rdata.data()), 0) << form.name;
        EXPECT_EQ(last_payload(), form.payload) << form.name;
        EXPECT_EQ(rlen, 3) << form.name;
        EXPECT_EQ(Bytes(rdata.begin(), rdata.begin() + 4), (Bytes{0xC1, 0xC2, 0xC3, 0x00})) << form.name;
        EXPECT_EQ(pinpad::pad_state().pwdkb_work_index, form.records_key ? 0x2Bu : 5u) << form.name;
    }
}

TEST_F(PadEntry, InternalFormsOfTheSecondInterface) {
    using namespace pinpad;
    struct Case {
        EntryForm form;
        EntryArguments arguments;
        Bytes payload;
    };
    const std::vector<Case> cases{
        {form::getpwd_new, {.mode = 3}, {0xC5, 0x05, 0x00, 0x1B, 0x48, '1', 0x0D, 0x0A}},
        {form::getpwd_new, {.mode = 4}, {0xC5, 0x05, 0x00, 0x1B, 0x48, '3', 0x0D, 0x0A}},
        {form::getpwd_encrypt_new, {.mode = 3, .keyno = 7, .cardno = card.data()},
         concat({{0xC5, 0x06, 0x00, 0x1B, 0x48, '1', 0x07, 0x00, 0x00}, card})},
        {form::getpwd_encrypt_new, {.mode = 4, .keyno = 7, .cardno = card.data()},
         concat({{0xC5, 0x06, 0x00, 0x1B, 0x48, '3', 0x07, 0x00, 0x00}, card})},
        {form::getpwd_nb, {.keyno = 0x31}, {0xC5, 0x08, 0x00, 0x1B, 0x49, 0x31}},
        {form::getpwd_again_nb, {.keyno = 0x31}, {0xC5, 0x08, 0x00, 0x1B, 0x45, 0x31}},
    };
    for (const Case& c : cases) {
        const link::Payload payload = entry_payload(c.form, c.arguments);
        const auto bytes = payload.bytes();
        EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), c.payload);
    }
}

TEST_F(PadEntry, SelectorDigitOfEachMode) {
    answer_with({});
    open_gates();
    const std::vector<std::pair<int, std::uint8_t>> cases{{1, '0'}, {2, '2'}, {3, '1'}, {4, '3'},
                                                         {0, '3'}, {-1, '3'}, {5, '3'}};
    for (const auto& [mode, digit] : cases) {
        ASSERT_EQ(pwdkb_getpwd_new2(icdev, mode, &rlen, rdata.data()), 0);
        EXPECT_EQ(last_payload().at(5), digit) << "mode " << mode;
    }
}

TEST_F(PadEntry, GatesRefuseWithMinus66BeforeMinus65AndSendNothing) {
    for (const Form& form : every_form()) {
        pinpad::reset_pad_state();
        EXPECT_EQ(form.call(icdev, &rlen, rdata.data()), -66) << form.name;
        pinpad::pad_state().pwdkb_timeout_set = true;
        EXPECT_EQ(form.call(icdev, &rlen, rdata.data()), -65) << form.name;
        pinpad::pad_state().pwdkb_timeout_set = false;
        pinpad::pad_state().pwdkb_pwdlen_set = true;
        EXPECT_EQ(form.call(icdev, &rlen, rdata.data()), -66) << form.name;
    }
    EXPECT_TRUE(os.requests.empty());
}

TEST_F(PadEntry, EntriesApplyThePadWaitAndLeaveItInForce) {
    open_gates();
    pinpad::pad_state().pwdkb_link_timeout = 21000;
    link::set_link_timeouts(5000, 9);
    std::uint32_t seen = 0;
    os.respond = [&](const Bytes&) {
        seen = read_ms();
        return make_reply(0, {0x01});
    };
    for (const Form& form : every_form()) {
        link::set_link_timeouts(5000, 9);
        ASSERT_EQ(form.call(icdev, &rlen, rdata.data()), 0) << form.name;
        EXPECT_EQ(seen, 21000u) << form.name;
        EXPECT_EQ(read_ms(), 21000u) << form.name;
        EXPECT_EQ(link::link_state().write_gap_ms, 0u) << form.name;
    }
    // The keypad's exchange and the second interface's close put it back.
    unsigned char keypad_length = 0;
    ASSERT_EQ(dev_pwdkb_getpwd(icdev, 0, &keypad_length, rdata.data()), 0);
    EXPECT_EQ(read_ms(), 5000u);
    link::set_link_timeouts(21000, 0);
    EXPECT_EQ(mw_kb_close(icdev), 0);
    EXPECT_EQ(read_ms(), 5000u);
}

TEST_F(PadEntry, FailureChangesNoOutputAndNoWorkKey) {
    open_gates();
    os.respond = [](const Bytes&) { return make_reply(0x6A88); };
    for (const Form& form : every_form()) {
        pinpad::pad_state().pwdkb_work_index = 5;
        rdata.fill(0xEE);
        rlen = 0xEE;
        EXPECT_EQ(form.call(icdev, &rlen, rdata.data()), -0x6A88) << form.name;
        EXPECT_EQ(rlen, 0xEE) << form.name;
        EXPECT_EQ(rdata[0], 0xEE) << form.name;
        EXPECT_EQ(pinpad::pad_state().pwdkb_work_index, 5u) << form.name;
    }
}

TEST_F(PadEntry, ReplyOfFiftyBytesFitsAndLongerIsRefused) {
    open_gates();
    answer_with(Bytes(50, 0x44));
    ASSERT_EQ(pwdkb_getpwd(icdev, &rlen, rdata.data()), 0);
    EXPECT_EQ(rlen, 50);
    EXPECT_EQ(rdata[49], 0x44);
    EXPECT_EQ(rdata[50], 0x00);

    answer_with(Bytes(51, 0x44));
    rlen = 0xEE;
    EXPECT_EQ(pwdkb_getpwd_encrypt(icdev, 1, card.data(), &rlen, rdata.data()), -38);
    EXPECT_EQ(rlen, 0xEE);
}

TEST_F(PadEntry, NullPointersAreRefusedBeforeAnythingIsSent) {
    open_gates();
    EXPECT_EQ(pwdkb_getpwd(icdev, nullptr, rdata.data()), -19);
    EXPECT_EQ(pwdkb_getpwd2(icdev, &rlen, nullptr), -19);
    EXPECT_EQ(pwdkb_getpwd_encrypt2(icdev, 1, nullptr, &rlen, rdata.data()), -19);
    EXPECT_EQ(pwdkb_getpwd_encrypt_new2(icdev, 1, nullptr, 1, &rlen, rdata.data()), -19);
    EXPECT_TRUE(os.requests.empty());
}

}  // namespace
}  // namespace qz::test
