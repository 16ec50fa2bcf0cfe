#include <gtest/gtest.h>

#include "card_data.h"
#include "identity/record.h"

namespace qz::test {
namespace {

using identity::RecordKind;

TextBlock foreign_card(std::u16string_view country, std::u16string_view type = u"I") {
    return text_block({{0, 120, u"SMITH JOHN"},
                       {120, 2, u"1"},
                       {122, 30, u"USA110079060502"},
                       {152, 6, country},
                       {158, 30, u"约翰·史密斯"},
                       {188, 16, u"20200105"},
                       {204, 16, u"20300104"},
                       {220, 16, u"19790605"},
                       {236, 4, u"01"},
                       {240, 8, u"1100"},
                       {248, 2, type}});
}

TEST(CardText, OrdinaryCardHasElevenFields) {
    const TextBlock block = ordinary_card();
    EXPECT_EQ(identity::record_kind(block), RecordKind::ordinary);
    EXPECT_EQ(identity::card_text(block), ordinary_card_text());
}

TEST(CardText, ForeignCardHasThirteenFieldsWithTheCountry) {
    struct Case {
        std::u16string_view code;
        const char* country;
    };
    for (const Case& c : {Case{u"USA", "美国/USA"}, Case{u"STp", "圣多美和普林西比/STp"}, Case{u"XXA", "XXA"},
                          Case{u"usa", "usa"}, Case{u"", ""}}) {
        const TextBlock block = foreign_card(c.code);
        EXPECT_EQ(identity::record_kind(block), RecordKind::foreign);
        EXPECT_EQ(identity::card_text(block),
                  gbk("1|SMITH JOHN|男/M|USA110079060502|" + std::string(c.country) +
                      "|约翰·史密斯|20200105|20300104|19790605|01|1100|I||"));
    }
}

TEST(CardText, OnlyACapitalIMakesAForeignCard) {
    for (std::u16string_view type : {u"i", u"J", u""}) {
        const TextBlock block = foreign_card(u"USA", type);
        EXPECT_EQ(identity::record_kind(block), RecordKind::ordinary);
        EXPECT_EQ(identity::card_text(block).substr(0, 2), "0|");
    }
}

TEST(CardText, BarsInFieldsAreNotEscapedAndAZeroBlockGivesEmptyFields) {
    // Unset fields are blanks: the ordinary dates and the number keep theirs.
    const TextBlock block = text_block({{0, 30, u"A|B"}, {52, 70, u"|"}});
    const std::string date(8, ' '), number(18, ' ');
    EXPECT_EQ(identity::card_text(block), "0|A|B| | |" + date + "|||" + number + "||" + date + "|" + date + "||");
    EXPECT_EQ(identity::card_text(TextBlock{}), "0|| | ||||||||");
}

TEST(SplitReply, ModeZeroAndOneFindTheirParts) {
    const Bytes photo{'P', 'H', 'O', 'T', 'O'};
    const Bytes finger{0x01, 0xAB, 0xFF};
    const TextBlock block = ordinary_card();
    for (int mode : {0, 1}) {
        const Bytes reply = read_reply_data({.mode = mode, .status = {1, 2, 3}, .text = block, .photo = photo, .finger = finger});
        const auto parts = identity::split_reply(mode, reply);
        EXPECT_EQ(parts.module_status, (std::array<std::uint8_t, 3>{1, 2, 3}));
        EXPECT_EQ(parts.text_block, block);
        EXPECT_EQ(Bytes(parts.photo.begin(), parts.photo.end()), photo);
        EXPECT_EQ(Bytes(parts.finger.begin(), parts.finger.end()), mode == 1 ? finger : Bytes{});
        EXPECT_EQ(identity::finger_text(parts.finger), mode == 1 ? "01ABFF" : "");
    }
}

TEST(SplitReply, TextLengthPlacesThePhotoButNotTheFields) {
    // A text length of 250 puts the photo 6 bytes into the text block; the fields
    // are still read at their fixed offsets.
    const Bytes reply = read_reply_data({.text = ordinary_card(), .photo = {'X'}, .text_length = 250, .photo_length = 3});
    const auto parts = identity::split_reply(0, reply);
    EXPECT_EQ(parts.text_block, ordinary_card());
    const Bytes expected(reply.begin() + 9 + 250, reply.begin() + 9 + 253);
    EXPECT_EQ(Bytes(parts.photo.begin(), parts.photo.end()), expected);
}

TEST(SplitReply, LengthsPastTheReplyStopAtItsEnd) {
    const Bytes finger(2000, 0x5A);
    const Bytes reply = read_reply_data({.mode = 1, .text = ordinary_card(), .photo = Bytes(10, 1), .finger = finger});
    auto parts = identity::split_reply(1, reply);
    EXPECT_EQ(parts.finger.size(), identity::max_finger_bytes);
    EXPECT_EQ(identity::finger_text(parts.finger).size(), 2 * identity::max_finger_bytes);

    const Bytes cut = read_reply_data({.mode = 1, .text = ordinary_card(), .photo = Bytes(10, 1), .photo_length = 0xFFFF, .finger_length = 0xFFFF});
    parts = identity::split_reply(1, cut);
    EXPECT_EQ(parts.photo.size(), 10u);
    EXPECT_TRUE(parts.finger.empty());
    EXPECT_EQ(parts.photo.data() + parts.photo.size(), cut.data() + cut.size());

    const Bytes far = read_reply_data({.text = ordinary_card(), .text_length = 0xFFFF, .photo_length = 20});
    EXPECT_TRUE(identity::split_reply(0, far).photo.empty());
}

TEST(SplitReply, AShortReplyReadsAsZeros) {
    const Bytes full = read_reply_data({.text = ordinary_card()});
    const Bytes cut(full.begin(), full.begin() + 9 + 30);  // the name field only
    const auto parts = identity::split_reply(0, cut);
    EXPECT_EQ(parts.module_status, (std::array<std::uint8_t, 3>{0x00, 0x00, 0x90}));
    EXPECT_EQ(identity::card_text(parts.text_block), gbk("0|欧阳 娜娜| | ||||||||"));

    for (std::size_t size : {0, 1, 3, 4}) {
        const auto tiny = identity::split_reply(0, std::span(full).first(size));
        EXPECT_EQ(tiny.module_status, (std::array<std::uint8_t, 3>{0, 0, 0}));
        EXPECT_TRUE(tiny.photo.empty());
    }
}

}  // namespace
}  // namespace qz::test
