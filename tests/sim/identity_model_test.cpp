#include "sim/models/identity/identity_model.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "sim/core/json_values.h"
#include "sim/core/status.h"
#include "sim_test_helpers.h"
#include "support/temp_dir.h"

namespace qz::sim {
namespace {

using nlohmann::json;
using test::Bytes;
using test::hex;

// UCS-2 little-endian of `text`, padded with blanks to `bytes`.
Bytes field(std::u16string_view text, std::size_t bytes) {
    Bytes out;
    for (std::size_t i = 0; i < bytes / 2; ++i) {
        const char16_t unit = i < text.size() ? text[i] : u' ';
        out.push_back(static_cast<std::uint8_t>(unit));
        out.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return out;
}

// The text block expected from fields at the offsets the host reads them at.
struct Placed {
    std::size_t offset;
    std::u16string_view text;
    std::size_t bytes;
};

Bytes text_block(std::initializer_list<Placed> fields) {
    Bytes block = field(u"", 256);
    for (const Placed& placed : fields) {
        const Bytes bytes = field(placed.text, placed.bytes);
        std::copy(bytes.begin(), bytes.end(), block.begin() + static_cast<std::ptrdiff_t>(placed.offset));
    }
    return block;
}

Bytes slice(const Bytes& bytes, std::size_t from, std::size_t count) {
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                 bytes.begin() + static_cast<std::ptrdiff_t>(from + count));
}

Bytes file_bytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

const json cards = json::parse(R"({
    "resident": {
        "name": "王小明", "gender": "1", "ethnic": "01", "birth": "19900307",
        "address": "北京市海淀区示例路88号", "id_number": "110108199003070016",
        "issuer": "北京市公安局海淀分局", "valid_from": "20200115", "valid_until": "长期",
        "photo": {"hex": "89 50 4E 47"}, "finger": {"hex": "43 01 AA"}
    },
    "visitor": {
        "kind": "foreign", "name_latin": "JOHNSON EMILY", "gender": "2", "card_number": "USA110085031502",
        "country": "USA", "name": "约翰逊", "valid_from": "20230601", "valid_until": "20330601",
        "birth": "19850315", "card_version": "01", "issuer": "1500", "photo": "P"
    }
})");

const Bytes resident_block = text_block({
    {0, u"王小明", 30}, {30, u"1", 2}, {32, u"01", 4}, {36, u"19900307", 16},
    {52, u"北京市海淀区示例路88号", 70}, {122, u"110108199003070016", 36},
    {158, u"北京市公安局海淀分局", 30}, {188, u"20200115", 16}, {204, u"长期", 16},
});

class IdentityModelTest : public ::testing::Test {
protected:
    explicit IdentityModelTest(const std::string& present = "resident") {
        json document = {{"identity", {{"cards", cards}, {"present", present}, {"module_id", {{"hex", "05 01 AB"}}}}}};
        terminal = make_terminal(parse_scenario(document));
        identity = terminal->model<IdentityModel>();
    }

    Reply run(std::string_view payload) { return terminal->execute(hex(payload)); }

    std::shared_ptr<Terminal> terminal;
    IdentityModel* identity = nullptr;
};

TEST_F(IdentityModelTest, ReadsTextAndPhoto) {
    const Reply reply = run("32 50 00");
    ASSERT_EQ(reply.status, status::ok);
    const Bytes& data = reply.data;
    ASSERT_EQ(data.size(), 9u + 256 + 4);
    EXPECT_EQ(slice(data, 0, 9), hex("01 0B  00 00 90  01 00  00 04")) << "length of the rest, status, lengths";
    EXPECT_EQ(slice(data, 9, 256), resident_block);
    EXPECT_EQ(slice(data, 265, 4), hex("89 50 4E 47"));
}

TEST_F(IdentityModelTest, ReadsFingerDataOnTheSecondCommand) {
    const Reply reply = run("D0 07 00");
    ASSERT_EQ(reply.status, status::ok);
    const Bytes& data = reply.data;
    ASSERT_EQ(data.size(), 11u + 256 + 4 + 3);
    EXPECT_EQ(slice(data, 0, 11), hex("01 10  00 00 90  01 00  00 04  00 03"));
    EXPECT_EQ(slice(data, 11, 256), resident_block);
    EXPECT_EQ(slice(data, 267, 7), hex("89 50 4E 47  43 01 AA"));
}

TEST_F(IdentityModelTest, ForeignersCardCarriesItsTypeAtItsOwnOffsets) {
    identity->present("visitor");
    for (const char* payload : {"32 50 00", "D0 07 00"}) {
        const Reply reply = run(payload);
        ASSERT_EQ(reply.status, status::ok);
        const bool finger = payload[0] == 'D';
        const std::size_t text_at = finger ? 11 : 9;
        EXPECT_EQ(slice(reply.data, 5, text_at - 5), finger ? hex("01 00 00 01 00 00") : hex("01 00 00 01"))
            << "no finger data on this card";
        EXPECT_EQ(slice(reply.data, text_at, 256),
                  text_block({{0, u"JOHNSON EMILY", 120}, {120, u"2", 2}, {122, u"USA110085031502", 30},
                              {152, u"USA", 6}, {158, u"约翰逊", 30}, {188, u"20230601", 16},
                              {204, u"20330601", 16}, {220, u"19850315", 16}, {236, u"01", 4},
                              {240, u"1500", 8}, {248, u"I", 2}}));
        EXPECT_EQ(reply.data.back(), 'P');
    }
}

TEST_F(IdentityModelTest, ModuleStatusesReplaceTheRead) {
    struct Case {
        json status;
        const char* bytes;
    };
    const Case cases[] = {
        {"card_missing", "00 00 80"}, {"select_failed", "00 00 81"}, {"no_content", "00 00 91"},
        {"read_failed", "00 00 41"},  {"unknown_card", "00 00 40"},  {"random_failed", "00 00 47"},
        {{{"hex", "01 00 90"}}, "01 00 90"},
    };
    for (const Case& c : cases) {
        json document = {{"identity", {{"cards", cards}, {"present", "resident"}, {"status", c.status}}}};
        const auto failing = make_terminal(parse_scenario(document));
        for (const char* payload : {"32 50 00", "D0 07 00"}) {
            const Reply reply = failing->execute(hex(payload));
            EXPECT_EQ(reply.status, status::ok) << c.status << " is the module's, not the terminal's";
            EXPECT_EQ(reply.data, hex(std::string("00 03 ") + c.bytes)) << c.status;
        }
    }
}

TEST_F(IdentityModelTest, NoCardOnTheModuleIsNotFound) {
    identity->present(std::nullopt);
    EXPECT_EQ(run("32 50 00").data, hex("00 03 00 00 80"));
    EXPECT_EQ(run("D0 07 00").data, hex("00 03 00 00 80"));
    identity->set_status({0x00, 0x00, 0x41});
    EXPECT_EQ(run("32 50 00").data, hex("00 03 00 00 41")) << "a set failure wins over the missing card";
    identity->set_status(module_ok);
    identity->present("resident");
    EXPECT_EQ(slice(run("32 50 00").data, 2, 3), hex("00 00 90"));
    EXPECT_THROW(identity->present("nobody"), std::out_of_range);
}

TEST_F(IdentityModelTest, ModuleIdentifier) {
    const Reply reply = run("32 51");
    EXPECT_EQ(reply.status, status::ok);
    EXPECT_EQ(reply.data, hex("05 01 AB"));
}

TEST_F(IdentityModelTest, MalformedCommandsAreRefused) {
    const test::Bytes none;
    const std::pair<const char*, std::uint16_t> cases[] = {
        {"32 50", status::wrong_length},    {"32 50 00 00", status::wrong_length}, {"32 50 01", status::out_of_range},
        {"D0 07", status::wrong_length},    {"D0 07 02", status::out_of_range},    {"32 51 00", status::wrong_length},
        {"32 52 00", status::instruction_unknown}, {"D0 06 00", status::instruction_unknown},
    };
    for (const auto& [payload, expected] : cases) {
        const Reply reply = run(payload);
        EXPECT_EQ(reply.status, expected) << payload;
        EXPECT_EQ(reply.data, none) << payload;
    }
}

// The classes are shared with the contactless status and the record commands.
class OtherModelOfTheSharedClasses final : public DeviceModel {
public:
    std::vector<Route> routes() const override { return {{0x32, {0x70}}, {0xD0, {0x01, 0x02, 0x03}}}; }
    Reply handle(const Command&) override { return {status::ok, {0x77}}; }
};

TEST_F(IdentityModelTest, LeavesTheOtherInstructionsOfItsClassesFree) {
    ASSERT_NO_THROW(terminal->add_model(std::make_unique<OtherModelOfTheSharedClasses>()));
    EXPECT_EQ(run("32 70 00").data, hex("77"));
    EXPECT_EQ(run("D0 01 00").data, hex("77"));
    EXPECT_EQ(slice(run("32 50 00").data, 2, 3), hex("00 00 90"));
}

TEST(IdentityScenario, TextIsConvertedFromUtf8) {
    const json card = {{"name", "Aé中"}, {"reserved", ""}};
    const IdentityCard parsed = parse_identity_card(card, "c", ".");
    EXPECT_EQ(slice(Bytes(parsed.text.begin(), parsed.text.end()), 0, 8), hex("41 00 E9 00 2D 4E 20 00"));
    EXPECT_EQ(slice(Bytes(parsed.text.begin(), parsed.text.end()), 220, 36), field(u"", 36));
}

TEST(IdentityScenario, ShippedScenariosHoldBothCardsAndTheirPhotos) {
    const std::filesystem::path folder = QZ_32_SIM_SCENARIO_DIR;
    const IdentityConfig defaults = parse_identity(load_scenario(folder / "default.json").document);
    ASSERT_EQ(defaults.present, "ordinary");
    ASSERT_EQ(defaults.cards.size(), 2u);
    EXPECT_EQ(defaults.cards.at("ordinary").kind, RecordKind::ordinary);
    EXPECT_EQ(defaults.cards.at("foreigner").kind, RecordKind::foreign);
    EXPECT_EQ(defaults.cards.at("ordinary").photo, file_bytes(folder / "portrait.png"));
    EXPECT_EQ(defaults.cards.at("foreigner").photo, file_bytes(folder / "portrait_foreigner.png"));
    EXPECT_EQ(slice(defaults.cards.at("ordinary").photo, 0, 8), hex("89 50 4E 47 0D 0A 1A 0A"));
    // The host reads at most 3096 bytes, finger data included.
    for (const auto& [name, card] : defaults.cards)
        EXPECT_LE(11 + 256 + card.photo.size() + card.finger.size(), 3096u) << name;

    const IdentityConfig foreigner = parse_identity(load_scenario(folder / "foreigner.json").document);
    ASSERT_EQ(foreigner.present, "foreigner");
    EXPECT_EQ(foreigner.cards.at("foreigner").text, defaults.cards.at("foreigner").text);
}

TEST(IdentityScenario, PhotoFilesAreFoundInThePhotoFolder) {
    qz::test::TempDir dir;
    std::ofstream(dir.path() / "face.png", std::ios::binary) << "FACE";
    const json relative = {{"identity", {{"cards", {{"a", {{"photo", {{"file", "face.png"}}}}}}}}}};
    EXPECT_EQ(parse_identity(relative, dir.path()).cards.at("a").photo, Bytes({'F', 'A', 'C', 'E'}));
    const std::string face = (dir.path() / "face.png").string();
    const json absolute = {{"identity", {{"cards", {{"a", {{"photo", {{"file", face}}}}}}}}}};
    EXPECT_EQ(parse_identity(absolute, "/nowhere").cards.at("a").photo, Bytes({'F', 'A', 'C', 'E'}));
    EXPECT_TRUE(parse_identity(json::object()).cards.empty()) << "no section: no cards";
}

TEST(IdentityScenario, BadValuesAreNamed) {
    struct Bad {
        const char* section;
        const char* named;
    };
    const Bad cases[] = {
        {R"({"cards": {"a": {"name": "一二三四五六七八九十一二三四五六"}}})", "identity.cards.a.name: 16 characters"},
        {R"({"cards": {"a": {"gender": "12"}}})", "identity.cards.a.gender"},
        {R"({"cards": {"a": {"name": "😀"}}})", "beyond U+FFFF"},
        {R"({"cards": {"a": {"name": 7}}})", "identity.cards.a.name: expected a text"},
        {R"({"cards": {"a": {"country": "USA"}}})", "unknown key \"country\""},
        {R"({"cards": {"a": {"kind": "foreign", "address": "x"}}})", "unknown key \"address\""},
        {R"({"cards": {"a": {"kind": "alien"}}})", "identity.cards.a.kind"},
        {R"({"cards": {"a": {"photo": {"file": "missing.png"}}}})", "identity.cards.a.photo.file"},
        {R"({"cards": {"a": {"photo": {"file": "x", "size": 1}}}})", "identity.cards.a.photo"},
        {R"({"cards": {"a": {"finger": {"hex": "0"}}}})", "identity.cards.a.finger"},
        {R"({"cards": []})", "identity.cards"},
        {R"({"present": "b", "cards": {"a": {}}})", "identity.present: no card \"b\""},
        {R"({"present": 1})", "identity.present"},
        {R"({"status": "jammed"})", "unknown module status \"jammed\""},
        {R"({"status": {"hex": "00 90"}})", "identity.status: three"},
        {R"({"module": {}})", "unknown key \"module\""},
    };
    for (const Bad& bad : cases) {
        try {
            parse_identity({{"identity", json::parse(bad.section)}}, QZ_32_SIM_SCENARIO_DIR);
            ADD_FAILURE() << "accepted " << bad.section;
        } catch (const ScenarioError& error) {
            EXPECT_NE(std::string(error.what()).find(bad.named), std::string::npos)
                << bad.section << " gave: " << error.what();
        }
    }
    const json long_id = {{"identity", {{"module_id", {{"hex", std::string(2 * 256, 'A')}}}}}};
    EXPECT_THROW(parse_identity(long_id), ScenarioError);
    const json too_big = {{"identity", {{"cards", {{"a", {{"photo", std::string(65536, 'x')}}}}}}}};
    EXPECT_THROW(parse_identity(too_big), ScenarioError);
}

TEST(IdentityScenario, Utf8ThatIsNotWellFormedIsRefused) {
    // Overlong, a surrogate, cut short, a lone continuation byte, a five-byte form.
    const std::string_view texts[] = {"\xC0\xAF", "\xED\xA0\x80", "\xE4\xB8", "\x80", "\xF8\x88\x80\x80\x80"};
    for (std::size_t i = 0; i < std::size(texts); ++i) {
        // nlohmann keeps such bytes as they are; it checks UTF-8 only when writing.
        const json value = {{"name", std::string(texts[i])}};
        EXPECT_THROW(parse_identity_card(value, "c", "."), ScenarioError) << "case " << i;
    }
}

}  // namespace
}  // namespace qz::sim
