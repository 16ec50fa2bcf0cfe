#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

using namespace std::string_literals;

#include "card_data.h"
#include "identity/field_decoding.h"

namespace qz::test {
namespace {

using identity::IDFieldToText;
using identity::IDForeignFieldToText;

// A raw field as the decoder gets it: the field's bytes at the head of a
// zero-filled 256-byte area.
std::array<std::uint8_t, 256> info_of(const Bytes& field) {
    std::array<std::uint8_t, 256> info{};
    std::copy(field.begin(), field.end(), info.begin());
    return info;
}

std::array<std::uint8_t, 256> info_of(std::u16string_view text, std::size_t bytes) {
    return info_of(ucs2_field(text, bytes));
}

struct TextCase {
    const char* what;
    int kind;
    Bytes field;
    std::string expected_utf8;
};

TEST(FieldToText, OrdinaryFieldsConvertCutAndTrim) {
    const std::vector<TextCase> cases{
        {"two characters and 13 blanks keep 4 bytes", 0, ucs2_field(u"张三", 30), "张三"},
        {"a name of 15 characters keeps 30 bytes", 0, ucs2_field(u"爱新觉罗溥仪爱新觉罗溥仪爱新觉", 30),
         "爱新觉罗溥仪爱新觉罗溥仪爱新觉"},
        {"one inner blank is kept", 0, ucs2_field(u"李 四", 30), "李 四"},
        {"two inner blanks cut the name", 0, ucs2_field(u"李  四", 30), "李"},
        {"short and unpadded is copied whole", 0, ucs2_field(u"王五", 4), "王五"},
        {"a character outside GBK becomes ?", 0, ucs2_field(u"A\u0E01B", 30), "A?B"},
        {"an unpaired surrogate becomes ?", 0, ucs2_field(u"A\xD800" u"B", 30), "A?B"},
        {"all blanks give nothing", 9, ucs2_field(u"", 36), ""},
        {"address of 35 characters, full width", 4,
         ucs2_field(u"北京市海淀区中关村南大街甲十二号院三号楼二单元一零二室北京市海淀区", 70),
         "北京市海淀区中关村南大街甲十二号院三号楼二单元一零二室北京市海淀区"},
        {"date of birth: first 8 bytes", 3, ucs2_field(u"1992081399", 16), "19920813"},
        {"date: blanks are not trimmed but cut", 7, ucs2_field(u"2015 3", 16), "2015 3  "},
        {"identity number: first 18 bytes", 5, ucs2_field(u"11010519491231002X99", 36), "11010519491231002X"},
        {"end of validity as a word keeps its blanks", 8, ucs2_field(u"长期", 16), "长期    "},
    };
    for (const TextCase& c : cases)
        EXPECT_EQ(IDFieldToText(c.kind, info_of(c.field)), gbk(c.expected_utf8)) << c.what;
}

TEST(FieldToText, ForeignFieldsAreTrimmedToTheirByteLimits) {
    const std::vector<TextCase> cases{
        {"name in Latin letters", 1, ucs2_field(u"SMITH, JOHN  PAUL", 120), "SMITH, JOHN"},
        {"country code", 4, ucs2_field(u"USA", 6), "USA"},
        {"dates are trimmed, not cut", 6, ucs2_field(u"2020 1", 16), "2020 1"},
        {"version of 4 bytes", 9, ucs2_field(u"01", 4), "01"},
        {"a character that would cross the limit is left out", 9, ucs2_field(u"ABC汉", 8), "ABC"},
        {"one that just fits is kept", 9, ucs2_field(u"AB汉", 8), "AB汉"},
        {"reserved", 12, ucs2_field(u"", 6), ""},
    };
    for (const TextCase& c : cases)
        EXPECT_EQ(IDForeignFieldToText(c.kind, info_of(c.field)), gbk(c.expected_utf8)) << c.what;
}

TEST(FieldToText, UnknownKindsGiveNothing) {
    const auto info = info_of(u"ABC", 30);
    for (int kind : {-1, 10, 11, 255}) EXPECT_EQ(IDFieldToText(kind, info), "") << kind;
    for (int kind : {0, 13, -1}) EXPECT_EQ(IDForeignFieldToText(kind, info), "") << kind;
}

TEST(TrimAtDoubleBlank, FirstDoubleBlankWithinTheWidth) {
    struct Case {
        std::string text;
        int width;
        int keep;
    };
    const std::vector<Case> cases{
        {"AB  CD", 6, 2}, {"  AB", 4, 0}, {"A B C", 5, 5}, {"A B ", 4, 4},
        {"ABC ", 4, 4},   {"ABC  ", 4, 4}, {"ABC\0\0\0"s, 6, 6}, {"A B  C  ", 8, 3},
    };
    for (const Case& c : cases)
        EXPECT_EQ(identity::TrimAtDoubleBlank(c.text, c.width), c.keep) << '"' << c.text << "\" " << c.width;
}

TEST(Gender, EveryCodeOnBothKindsOfCard) {
    struct Case {
        std::u16string_view code;
        const char* ordinary;
        const char* foreign;
    };
    const std::vector<Case> cases{
        {u"0", "未知", "未知"}, {u"1", "男", "男/M"}, {u"2", "女", "女/F"}, {u"9", "未说明", "未说明"},
        {u"3", " ", " "},       {u"", " ", " "},      {u"男", " ", " "},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(IDFieldToText(1, info_of(c.code, 2)), gbk(c.ordinary));
        EXPECT_EQ(IDForeignFieldToText(2, info_of(c.code, 2)), gbk(c.foreign));
    }
}

TEST(EthnicGroup, CodesAreDecimalPairsAndOthersGiveABlank) {
    struct Case {
        std::u16string_view code;
        const char* name;
    };
    const std::vector<Case> cases{
        {u"01", "汉"}, {u"02", "蒙古"}, {u"10", "朝鲜"}, {u"57", "其他"}, {u"58", "外国血统中国籍人士"},
        {u"59", " "}, {u"00", " "}, {u"A1", " "},   // A1 counts as 101
        {u"1A", "傈僳"}, {u"1a", "傈僳"}, {u"2F", "撒拉"},  // 1*10+10 = 20, 2*10+15 = 35
        {u"0G", " "}, {u"-1", " "}, {u"5", " "}, {u"", " "},
    };
    for (const Case& c : cases) {
        std::string name = "untouched";
        const std::u16string code(c.code);
        const char chars[2] = {static_cast<char>(code.size() > 0 ? code[0] : 0),
                               static_cast<char>(code.size() > 1 ? code[1] : 0)};
        identity::NationCodeToName(chars, name);
        EXPECT_EQ(name, gbk(c.name)) << std::string(chars, 2);
        EXPECT_EQ(IDFieldToText(2, info_of(c.code, 4)), gbk(c.name));
    }
}

TEST(DecPairsToBytes, DecimalPairsAndTheStopAtABadCharacter) {
    std::array<std::uint8_t, 3> bytes{0xEE, 0xEE, 0xEE};
    EXPECT_EQ(identity::DecPairsToBytes(std::string_view("1234fF"), bytes), 0);
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{12, 34, 165}));

    bytes = {0xEE, 0xEE, 0xEE};
    EXPECT_EQ(identity::DecPairsToBytes(std::string_view("12G4"), std::span(bytes).first(2)), -1);
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{12, 0xEE, 0xEE}));

    EXPECT_EQ(identity::DecPairsToBytes(std::string_view("1"), std::span(bytes).first(1)), -1);
    EXPECT_EQ(identity::DecPairsToBytes(std::string_view(""), std::span(bytes).first(0)), 0);
}

// First, last and odd rows; codes compare exactly, case included.
TEST(Country, RowsAreFoundByTheirExactCodes) {
    const std::pair<const char*, const char*> rows[] = {
        {"AFG", "阿富汗"}, {"COG", "刚果（布）"}, {"GMB", "冈比亚Gambia"}, {"FLK", "福克兰群岛(马尔维纳斯)"},
        {"ZWE", "津巴布韦"}, {"STp", "圣多美和普林西比"}, {"afg", nullptr}, {"STP", nullptr}, {"AF", nullptr},
        {"AFGH", nullptr}, {"", nullptr}, {"AFG ", nullptr},
    };
    for (const auto& [code, name] : rows) {
        std::string looked_up = "untouched";
        EXPECT_EQ(identity::CountryCodeToName(code, looked_up), name ? 0 : -19) << code;
        EXPECT_EQ(looked_up, name ? gbk(name) : "untouched") << code;
    }
}

}  // namespace
}  // namespace qz::test
