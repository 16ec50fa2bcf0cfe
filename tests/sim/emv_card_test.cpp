#include "sim/models/cards/emv_card.h"

#include <gtest/gtest.h>

#include <string_view>

#include "card_test_helpers.h"
#include "sim/models/cards/ber_tlv.h"
#include "sim/core/status.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;
using test::status_words;

constexpr std::uint8_t field = 0xC1;
constexpr std::uint8_t slot_0 = 0xC0;

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes text(std::string_view characters) { return {characters.begin(), characters.end()}; }

Bytes with_lc(Bytes head, const Bytes& data, bool le = true) {
    head.push_back(static_cast<std::uint8_t>(data.size()));
    head.insert(head.end(), data.begin(), data.end());
    if (le) head.push_back(0x00);
    return head;
}

Bytes select(const Bytes& name, std::uint8_t p2 = 0x00) { return with_lc({0x00, 0xA4, 0x04, p2}, name); }

Bytes gpo(const Bytes& pdol_data) {
    Bytes data{0x83, static_cast<std::uint8_t>(pdol_data.size())};
    data.insert(data.end(), pdol_data.begin(), pdol_data.end());
    return with_lc({0x80, 0xA8, 0x00, 0x00}, data);
}

Bytes read_record(std::uint8_t number, std::uint8_t sfi, std::uint8_t le = 0x00) {
    return {0x00, 0xB2, number, static_cast<std::uint8_t>(sfi << 3 | 4), le};
}

Bytes data_of(const Bytes& response) { return Bytes(response.begin(), response.end() - 2); }

const Bytes debit_aid = hex("A0 00 00 03 33 01 01 01");
const Bytes credit_aid = hex("A0 00 00 03 33 01 01 02");

// A card of sim/scenarios/cards/ in the field (direct answers), activated.
class FieldCard : public ::testing::Test {
protected:
    void load(const std::string& profile) {
        terminal = test::terminal_with(test::card_profile(profile), CardLocation::field);
        ASSERT_EQ(terminal->execute(hex("C1 30 00 00")).status, status::ok);
    }
    Bytes send(const Bytes& apdu) { return test::transmit(*terminal, field, apdu); }

    std::shared_ptr<Terminal> terminal;
};

TEST_F(FieldCard, PpseListsTheApplicationsInItsFci) {
    load("contactless_two_apps");
    const Bytes response = send(select(text("2PAY.SYS.DDF01")));
    ASSERT_EQ(status_words(response), 0x9000);
    const Bytes fci = data_of(response);
    EXPECT_EQ(fci[0], 0x6F);
    EXPECT_EQ(find_tlv(fci, 0x84), text("2PAY.SYS.DDF01"));
    EXPECT_FALSE(find_tlv(fci, 0x88)) << "a PPSE has no directory file";
    const auto entries = find_tlv(fci, 0xBF0C);
    ASSERT_TRUE(entries);
    // Both entries in card order, each with AID, label and priority.
    const Bytes expected = hex("61 15 4F 08 A0 00 00 03 33 01 01 02 50 06") + text("CREDIT") + hex("87 01 02") +
                           hex("61 14 4F 08 A0 00 00 03 33 01 01 01 50 05") + text("DEBIT") + hex("87 01 01");
    EXPECT_EQ(*entries, expected);

    EXPECT_EQ(send(select(text("1PAY.SYS.DDF01"))), hex("6A 82")) << "the contact directory is not in the field";
}

TEST_F(FieldCard, SelectsByPartialNameAndNextOccurrence) {
    load("contactless_two_apps");
    const Bytes partial = hex("A0 00 00 03 33 01 01");
    struct Step {
        Bytes apdu;
        std::optional<Bytes> df_name;  // nothing: the status below
        std::uint16_t sw;
    };
    const Step steps[] = {
        {select(partial), credit_aid, 0x9000},
        {select(partial, 0x02), debit_aid, 0x9000},
        {select(partial, 0x02), std::nullopt, 0x6A82},
        {select(partial), credit_aid, 0x9000},
        {select(hex("A0 00 00 03 33")), credit_aid, 0x9000},
        {select(debit_aid), debit_aid, 0x9000},
        {select(hex("A0 00 00 03 33 01 01 03")), std::nullopt, 0x6A82},
        {select(hex("A0 00 00 03 33 01 01 01 00")), std::nullopt, 0x6A82},
        {select(debit_aid, 0x0C), std::nullopt, 0x9000},
        {with_lc({0x00, 0xA4, 0x00, 0x00}, hex("3F 00")), std::nullopt, 0x6A86},
        {select(debit_aid, 0x01), std::nullopt, 0x6A86},
        {select(debit_aid, 0x04), std::nullopt, 0x6A86},
        {hex("00 A4 04 00 00"), std::nullopt, 0x6A82},
    };
    for (const Step& step : steps) {
        const Bytes response = send(step.apdu);
        ASSERT_EQ(status_words(response), step.sw);
        if (step.df_name)
            EXPECT_EQ(find_tlv(data_of(response), 0x84), step.df_name);
        else
            EXPECT_EQ(response.size(), 2u);
    }
}

TEST_F(FieldCard, ApplicationFciCarriesPdolAndQuickPathGpoIsFormat2) {
    load("contactless_qpboc");
    const Bytes fci = data_of(send(select(debit_aid)));
    EXPECT_EQ(find_tlv(fci, 0x9F38), hex("9F66 04 9F02 06 9F03 06 9F1A 02 95 05 5F2A 02 9A 03 9C 01 9F37 04"));
    EXPECT_EQ(find_tlv(fci, 0x50), text("DEBIT"));
    EXPECT_EQ(find_tlv(fci, 0x5F2D), text("zhen"));

    const Bytes response = send(gpo(Bytes(33, 0x00)));
    ASSERT_EQ(status_words(response), 0x9000);
    const Bytes reply = data_of(response);
    EXPECT_EQ(reply[0], 0x77);
    EXPECT_EQ(Bytes(reply.begin() + 2, reply.begin() + 16), hex("82 02 00 80 94 08 10 01 01 00 18 01 01 00"))
        << "AIP and AFL lead the template";
    EXPECT_EQ(find_tlv(reply, 0x57), hex("62 22 02 12 34 56 78 94 D2 91 22 01 00 00 01 23"));
    EXPECT_EQ(find_tlv(reply, 0x5F20), text("ZHANG/SAN"));
}

TEST_F(FieldCard, GpoRefusesWhatARealCardRefuses) {
    load("contactless_qpboc");
    const Bytes right = Bytes(33, 0x00);
    EXPECT_EQ(send(gpo(right)), hex("69 85")) << "nothing selected";
    send(select(text("2PAY.SYS.DDF01")));
    EXPECT_EQ(send(gpo(right)), hex("69 85")) << "the directory is no application";
    send(select(debit_aid));
    EXPECT_EQ(send(gpo(Bytes(32, 0x00))), hex("67 00")) << "shorter than the PDOL asks";
    EXPECT_EQ(send(gpo(Bytes(34, 0x00))), hex("67 00")) << "longer than the PDOL asks";
    EXPECT_EQ(send(with_lc({0x80, 0xA8, 0x00, 0x00}, hex("84 01 00"))), hex("6A 80")) << "no template 83";
    EXPECT_EQ(send(with_lc({0x80, 0xA8, 0x00, 0x00}, hex("83 05 00"))), hex("67 00")) << "83 longer than Lc";
    EXPECT_EQ(send(with_lc({0x80, 0xA8, 0x01, 0x00}, hex("83 00"))), hex("6A 86"));
    EXPECT_EQ(status_words(send(gpo(right))), 0x9000);
    EXPECT_EQ(send(gpo(right)), hex("69 85")) << "only once a selection";
    send(select(debit_aid));
    EXPECT_EQ(status_words(send(gpo(right))), 0x9000) << "a new selection starts over";
}

TEST_F(FieldCard, ReadsRecordsOfTheSelectedFile) {
    load("contactless_qpboc");
    EXPECT_EQ(send(read_record(1, 2)), hex("69 85")) << "nothing selected";
    send(select(debit_aid));
    const Bytes record = send(read_record(1, 2));
    ASSERT_EQ(status_words(record), 0x9000);
    EXPECT_EQ(record[0], 0x70);
    EXPECT_EQ(find_tlv(data_of(record), 0x5A), hex("62 22 02 12 34 56 78 94"));

    EXPECT_EQ(send(read_record(2, 2)), hex("6A 83"));
    EXPECT_EQ(send(read_record(1, 5)), hex("6A 82"));
    EXPECT_EQ(send(hex("00 B2 01 10 00")), hex("6A 86")) << "P2 not 'record number in P1'";
    EXPECT_EQ(send(hex("00 B2 00 14 00")), hex("6A 86")) << "record 0";
    EXPECT_EQ(send(hex("00 B2 01 04 00")), hex("6A 86")) << "SFI 0";

    send(select(text("2PAY.SYS.DDF01")));
    EXPECT_EQ(send(read_record(1, 2)), hex("6A 82")) << "the application's records are not the directory's";
}

TEST_F(FieldCard, UnknownInstructionsAndClasses) {
    load("contactless_qpboc");
    EXPECT_EQ(send(hex("80 CA 9F 36 00")), hex("6D 00"));
    EXPECT_EQ(send(with_lc({0x80, 0xA4, 0x04, 0x00}, debit_aid)), hex("6E 00"));
    EXPECT_EQ(send(hex("00 A8 00 00 02 83 00 00")), hex("6E 00"));
}

TEST_F(FieldCard, ActivationStartsAfresh) {
    load("contactless_qpboc");
    send(select(debit_aid));
    ASSERT_EQ(status_words(send(read_record(1, 2))), 0x9000);
    ASSERT_EQ(terminal->execute(hex("C1 30 00 01")).status, status::ok);
    EXPECT_EQ(send(read_record(1, 2)), hex("69 85"));
}

TEST_F(FieldCard, RecordRefusedAsTheCardIsSetTo) {
    terminal = test::terminal_with(test::card_profile("contact_refused_records"), CardLocation::slot);
    ASSERT_EQ(terminal->execute(hex("C0 30 00")).status, status::ok);
    // T=0: the FCI waits behind 61xx.
    EXPECT_EQ(status_words(test::transmit(*terminal, slot_0, select(debit_aid))) >> 8, 0x61);
    EXPECT_EQ(test::transmit(*terminal, slot_0, read_record(2, 1)), hex("69 85"));
    EXPECT_EQ(test::transmit(*terminal, slot_0, read_record(1, 2)), hex("6A 82"));
}

// The contact path of a T=0 card, as a terminal drives it command by command.
TEST(ContactCard, PseWalkOverT0) {
    const auto terminal = test::terminal_with(test::card_profile("contact_pboc"), CardLocation::slot);
    ASSERT_EQ(terminal->execute(hex("C0 30 00")).data, hex("3B 6A 00 00 51 5A 33 32 20 44 45 42 49 54"));
    const auto send = [&](const Bytes& apdu) { return test::transmit(*terminal, slot_0, apdu); };

    const Bytes announced = send(select(text("1PAY.SYS.DDF01")));
    ASSERT_EQ(announced.size(), 2u);
    ASSERT_EQ(announced[0], 0x61);
    const Bytes fci = send({0x00, 0xC0, 0x00, 0x00, announced[1]});
    ASSERT_EQ(status_words(fci), 0x9000);
    EXPECT_EQ(fci.size(), announced[1] + 2u);
    EXPECT_EQ(find_tlv(data_of(fci), 0x88), hex("01"));
    EXPECT_EQ(find_tlv(data_of(fci), 0x5F2D), text("zhen"));

    const Bytes wrong_le = send(read_record(1, 1));
    ASSERT_EQ(wrong_le.size(), 2u);
    ASSERT_EQ(wrong_le[0], 0x6C);
    const Bytes directory = send(read_record(1, 1, wrong_le[1]));
    ASSERT_EQ(status_words(directory), 0x9000);
    EXPECT_EQ(data_of(directory),
              hex("70 16 61 14 4F 08 A0 00 00 03 33 01 01 01 50 05") + text("DEBIT") + hex("87 01 01"));

    send(select(debit_aid));
    const Bytes gpo_announced = send(gpo(hex("00 00 00 00 00 00 00 01 56")));
    EXPECT_EQ(gpo_announced, hex("61 10"));
    EXPECT_EQ(send(hex("00 C0 00 00 10")), hex("80 0E 7C 00 08 01 01 00 10 01 02 01 18 01 02 00 90 00"))
        << "format 1: AIP and AFL in template 80";
}

TEST(ContactCard, GpoWithoutPdolTakesTheEmptyTemplate) {
    const auto terminal = test::terminal_with(test::card_profile("contact_no_pdol"), CardLocation::slot);
    ASSERT_EQ(terminal->execute(hex("C0 30 00")).status, status::ok);
    const auto send = [&](const Bytes& apdu) { return test::transmit(*terminal, slot_0, apdu); };
    const Bytes fci_announced = send(select(debit_aid));
    const Bytes fci = send({0x00, 0xC0, 0x00, 0x00, fci_announced[1]});
    EXPECT_FALSE(find_tlv(data_of(fci), 0x9F38));
    EXPECT_EQ(send(gpo(hex("00"))), hex("67 00"));
    EXPECT_EQ(send(gpo({})), hex("61 08"));
}

}  // namespace
}  // namespace qz::sim
