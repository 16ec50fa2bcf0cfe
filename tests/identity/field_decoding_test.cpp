#include <gtest/gtest.h>

#include <array>
#include <sstream>
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

// Ethnic groups 01 to 58, in code order.
const char* const ethnic_groups = "汉 蒙古 回 藏 维吾尔 苗 彝 壮 布依 朝鲜 满 侗 瑶 白 土家 哈尼 哈萨克 傣 黎 傈僳 佤 畲 高山 拉祜 水 东乡 纳西 景颇 柯尔克孜 土 达斡尔 仫佬 羌 布朗 撒拉 毛南 仡佬 锡伯 阿昌 普米 塔吉克 怒 乌孜别克 俄罗斯 鄂温克 德昂 保安 裕固 京 塔塔尔 独龙 鄂伦春 赫哲 门巴 珞巴 基诺 其他 外国血统中国籍人士";

// Every country row, code then name, in table order.
const char* const countries =
    "AFG 阿富汗, ALB 阿尔巴尼亚, DZA 阿尔及利亚, ASM 美属萨摩亚, AND 安道尔, AGO 安哥拉, "
    "AIA 安圭拉, ATA 南极洲, ATG 安提瓜和巴布达, ARG 阿根廷, ARM 亚美尼亚, ABW 阿鲁巴, "
    "AUS 澳大利亚, AUT 奥地利, AZE 阿塞拜疆, BHS 巴哈马, BHR 巴林, BGD 孟加拉国, "
    "BRB 巴巴多斯, BLR 白俄罗斯, BEL 比利时, BLZ 伯利兹, BEN 贝宁, BMU 百慕大, BTN 不丹, "
    "BOL 玻利维亚, BIH 波黑, BWA 博茨瓦纳, BVT 布维岛, BRA 巴西, IOT 英属印度洋领土, "
    "BRN 文莱, BGR 保加利亚, BFA 布基纳法索, BDI 布隆迪, KHM 柬埔寨, CMR 喀麦隆, "
    "CAN 加拿大, CPV 佛得角, CYM 开曼群岛, CAF 中非, TCD 乍得, CHL 智利, CHN 中国, HKG 香港, "
    "MAC 澳门, TWN 台湾, CSR 圣诞岛, CCK 科科斯(基林)群岛, COL 哥伦比亚, COM 科摩罗, "
    "COG 刚果（布）, COD 刚果（金）, COK 库克群岛, CIV 科特迪瓦, HRV 克罗地亚, CUB 古巴, "
    "CYP 塞浦路斯, CZE 捷克, DNK 丹麦, DJI 吉布提, DMA 多米尼克, DOM 多米尼加共和国, "
    "TMP 东帝汶, ECU 厄瓜多尔, EGY 埃及, SLV 萨尔瓦多, GNQ 赤道几内亚, ERI 厄立特里亚, "
    "EST 爱沙尼亚, ETH 埃塞俄比亚, FLK 福克兰群岛(马尔维纳斯), FRO 法罗群岛, FJI 斐济, "
    "FIN 芬兰, FRA 法国, GUF 法属圭亚那, PYF 法属波利尼西亚, ATF 法属南部领土, GAB 加蓬, "
    "GMB 冈比亚Gambia, GEO 格鲁吉亚, DEU 德国, GHA 加纳, GIB 直布罗陀, GRC 希腊, GRL 格陵兰, "
    "GRD 格林纳达, GLP 瓜德罗普, GUM 关岛, GTM 危地马拉, GIN 几内亚, GNB 几内亚比绍, "
    "GUY 圭亚那, HTI 海地, HMD 赫德岛和麦克唐纳岛, HND 洪都拉斯, HUN 匈牙利, ISL 冰岛, "
    "IND 印度, IDN 印度尼西亚, IRN 伊朗, IRQ 伊拉克, IRL 爱尔兰, ISR 以色列, ITA 意大利, "
    "JAM 牙买加, JPN 日本, JOR 约旦, KAZ 哈萨克斯坦, KEN 肯尼亚, KIR 基里巴斯, PRK 朝鲜, "
    "KOR 韩国, KWT 科威特, KGZ 吉尔吉斯斯坦, LAO 老挝, LVA 拉脱维亚, LBN 黎巴嫩, "
    "LSO 莱索托, LBR 利比里亚, LBY 利比亚, LIE 列支敦士登, LTU 立陶宛, LUX 卢森堡, "
    "MKD 前南马其顿, MDG 马达加斯加, MWI 马拉维, MYS 马来西亚, MDV 马尔代夫, MLI 马里, "
    "MLT 马耳他, MHL 马绍尔群岛, MTQ 马提尼克, MRT 毛里塔尼亚, MUS 毛里求斯, MYT 马约特, "
    "MEX 墨西哥, FSM 密克罗尼西亚联邦, MDA 摩尔多瓦, MCO 摩纳哥, MNG 蒙古, "
    "MSR 蒙特塞拉特, MAR 摩洛哥, MOZ 莫桑比克, MMR 缅甸, NAM 纳米比亚, NRU 瑙鲁, "
    "NPL 尼泊尔, NLD 荷兰, ANT 荷属安的列斯, NCL 新喀里多尼亚, NZL 新西兰, NIC 尼加拉瓜, "
    "NER 尼日尔, NGA 尼日利亚, NIU 纽埃, NFK 诺福克岛, MNP 北马里亚纳, NOR 挪威, OMN 阿曼, "
    "PAK 巴基斯坦, PLW 帕劳, PST 巴勒斯坦, PAN 巴拿马, PNG 巴布亚新几内亚, PRY 巴拉圭, "
    "PER 秘鲁, PHL 菲律宾, PCN 皮特凯恩群岛, POL 波兰, PRT 葡萄牙, PRI 波多黎各, "
    "QAT 卡塔尔, REU 留尼汪, ROM 罗马尼亚, RUS 俄罗斯联邦, RWA 卢旺达, SHN 圣赫勒拿, "
    "KNA 圣基茨和尼维斯, LCA 圣卢西亚, SPM 圣皮埃尔和密克隆, "
    "VCT 圣文森特和格林纳丁斯, WSM 萨摩亚, SMR 圣马力诺, STp 圣多美和普林西比, "
    "SAU 沙特阿拉伯, SEN 塞内加尔, SYC 塞舌尔, SLE 塞拉利昂, SGP 新加坡, SVK 斯洛伐克, "
    "SVN 斯洛文尼亚, SLB 所罗门群岛, SOM 索马里, ZAF 南非, "
    "SGS 南乔治亚岛和南桑德韦奇岛, ESP 西班牙, LKA 斯里兰卡, SDN 苏丹, SUR 苏里南, "
    "SJM 斯瓦尔巴群岛, SWZ 斯威士兰, SWE 瑞典, CHE 瑞士, SYR 叙利亚, TJK 塔吉克斯坦, "
    "TZA 坦桑尼亚, THA 泰国, TGO 多哥, TKL 托克劳, TON 汤加, TTO 特立尼达和多巴哥, "
    "TUN 突尼斯, TUR 土耳其, TKM 土库曼斯坦, TCA 特克斯科斯群岛, TUV 图瓦卢, UGA 乌干达, "
    "UKR 乌克兰, ARE 阿联酋, GBR 英国, USA 美国, UMI 美国本土外小岛屿, URY 乌拉圭, "
    "UZB 乌兹别克斯坦, VUT 瓦努阿图, VAT 梵蒂冈, VEN 委内瑞拉, VNM 越南, "
    "VGB 英属维尔京群岛, VIR 美属维尔京群岛, WLF 瓦利斯和富图纳, ESH 西撒哈拉, "
    "YEM 也门, YUG 南斯拉夫, ZMB 赞比亚, ZWE 津巴布韦";

std::vector<std::string> words(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> out;
    for (std::string word; in >> word;) out.push_back(word);
    return out;
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
        {"a last single blank is kept", 0, ucs2_field(u"ABC ", 8), "ABC "},
        {"short and unpadded is copied whole", 0, ucs2_field(u"王五", 4), "王五"},
        {"middle dot of a minority name", 0, ucs2_field(u"买买提·艾力", 30), "买买提·艾力"},
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
        {"issuing authority", 6, ucs2_field(u"北京市公安局海淀分局", 30), "北京市公安局海淀分局"},
    };
    for (const TextCase& c : cases)
        EXPECT_EQ(IDFieldToText(c.kind, info_of(c.field)), gbk(c.expected_utf8)) << c.what;
}

TEST(FieldToText, ForeignFieldsAreTrimmedToTheirByteLimits) {
    const std::vector<TextCase> cases{
        {"name in Latin letters", 1, ucs2_field(u"SMITH, JOHN  PAUL", 120), "SMITH, JOHN"},
        {"card number", 3, ucs2_field(u"USA110079060502", 30), "USA110079060502"},
        {"country code", 4, ucs2_field(u"USA", 6), "USA"},
        {"dates are trimmed, not cut", 6, ucs2_field(u"2020 1", 16), "2020 1"},
        {"version of 4 bytes", 9, ucs2_field(u"01", 4), "01"},
        {"a character that would cross the limit is left out", 9, ucs2_field(u"ABC汉", 8), "ABC"},
        {"one that just fits is kept", 9, ucs2_field(u"AB汉", 8), "AB汉"},
        {"issuing authority code", 10, ucs2_field(u"1100", 8), "1100"},
        {"card type", 11, ucs2_field(u"I", 2), "I"},
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

TEST(EthnicGroup, EveryCodeFrom01To58) {
    const auto names = words(ethnic_groups);
    ASSERT_EQ(names.size(), 58u);
    for (int code = 1; code <= 58; ++code) {
        const char digits[] = {static_cast<char>('0' + code / 10), static_cast<char>('0' + code % 10), 0};
        const std::u16string text{static_cast<char16_t>(digits[0]), static_cast<char16_t>(digits[1])};
        EXPECT_EQ(IDFieldToText(2, info_of(text, 4)), gbk(names[static_cast<std::size_t>(code - 1)])) << digits;
    }
}

TEST(EthnicGroup, CodesAreDecimalPairsAndOthersGiveABlank) {
    struct Case {
        std::u16string_view code;
        const char* name;
    };
    const std::vector<Case> cases{
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

TEST(Country, EveryRowIsFoundByItsCode) {
    std::istringstream rows(countries);
    int found = 0;
    for (std::string row; std::getline(rows, row, ',');) {
        std::istringstream fields(row);
        std::string code, name;
        fields >> code >> name;
        std::string looked_up;
        EXPECT_EQ(identity::CountryCodeToName(code, looked_up), 0) << code;
        EXPECT_EQ(looked_up, gbk(name)) << code;
        EXPECT_LE(looked_up.size(), 47u) << code;
        ++found;
    }
    EXPECT_EQ(found, 238);
}

TEST(Country, CodesCompareExactly) {
    for (const char* code : {"afg", "STP", "stp", "AF", "AFGH", "", "AFG "}) {
        std::string name = "untouched";
        EXPECT_EQ(identity::CountryCodeToName(code, name), -19) << code;
        EXPECT_EQ(name, "untouched");
    }
    std::string name;
    EXPECT_EQ(identity::CountryCodeToName("STp", name), 0);
    EXPECT_EQ(name, gbk("圣多美和普林西比"));
}

}  // namespace
}  // namespace qz::test
