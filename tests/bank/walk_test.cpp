#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>

#include "qz_32.h"
#include "scripted_card.h"

namespace qz::test {
namespace {

const Bytes aid{0xA0, 0x00, 0x00, 0x03, 0x33, 0x01, 0x01};
// 9F7A 01, 9F02 06, 5F2A 02, DF69 01: answered by 10 bytes.
const Bytes pdol{0x9F, 0x7A, 0x01, 0x9F, 0x02, 0x06, 0x5F, 0x2A, 0x02, 0xDF, 0x69, 0x01};
const Bytes pan_bcd{0x62, 0x22, 0x02, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x3F};
const std::string pan_digits = "6222021234567890123";
const std::string holder = "ZHANG SAN   ";

Bytes record(std::initializer_list<Bytes> items) { return with_9000(tlv({0x70}, concat(items))); }
Bytes name_item(const std::string& name) { return tlv({0x5F, 0x20}, bytes_of(name)); }
Bytes pan_item(const Bytes& bcd) { return tlv({0x5A}, bcd); }
Bytes read_record(int record, int sfi, int le = 0) {
    return {0x00, 0xB2, static_cast<std::uint8_t>(record), static_cast<std::uint8_t>(sfi * 8 + 4),
            static_cast<std::uint8_t>(le)};
}
Bytes select(const Bytes& name) {
    return concat({{0x00, 0xA4, 0x04, 0x00, static_cast<std::uint8_t>(name.size())}, name, {0x00}});
}
const Bytes gpo{0x80, 0xA8, 0x00, 0x00, 0x0C, 0x83, 0x0A, 0x00, 0x00, 0x00, 0x00,
                0x00, 0x00, 0x00, 0x01, 0x56, 0x00, 0x00};
Bytes gpo_reply(const Bytes& afl) { return with_9000(tlv({0x80}, concat({{0x7C, 0x00}, afl}))); }

struct Path {
    const char* name;
    bool contactless;
    std::uint8_t card_class;
    std::string directory;
};
const Path contact{"contact", false, 0xC0, "1PAY.SYS.DDF01"};
const Path contactless{"contactless", true, 0xC1, "2PAY.SYS.DDF01"};
const Path paths[] = {contact, contactless};

struct Outputs {
    std::array<std::uint8_t, 600> pan{};
    unsigned short pan_length = 0xEEEE;
    std::array<std::uint8_t, 600> name{};
    unsigned short name_length = 0xEEEE;

    std::string pan_text() const { return {pan.begin(), pan.begin() + pan_length}; }
    std::string name_text() const { return {name.begin(), name.begin() + name_length}; }
};

class BankWalk : public ::testing::Test {
protected:
    void SetUp() override {
        icdev = os.open_hid_link();
        os.respond = [this](const Bytes& request) { return card.respond(request); };
    }

    // A card whose directory names one application, whose GPO reply names SFI 2
    // records 1 and 2, the name in the first and the PAN in the second.
    void load_card(const Path& path) {
        const Bytes directory = bytes_of(path.directory);
        card.selects[directory] =
            with_9000(tlv({0x6F}, concat({tlv({0x84}, directory), tlv({0xA5}, tlv({0x88}, {0x01}))})));
        card.records[{1, 1}] =
            with_9000(tlv({0x70}, tlv({0x61}, concat({tlv({0x4F}, aid), tlv({0x50}, bytes_of("DEBIT"))}))));
        card.selects[aid] =
            with_9000(tlv({0x6F}, concat({tlv({0x84}, aid), tlv({0xA5}, concat({tlv({0x50}, bytes_of("DEBIT")),
                                                                                 tlv({0x9F, 0x38}, pdol)}))})));
        card.processing_options = gpo_reply({0x10, 0x01, 0x02, 0x00});
        card.records[{2, 1}] = record({name_item(holder)});
        card.records[{2, 2}] = record({pan_item(pan_bcd)});
    }

    int read(const Path& path, Outputs& out, unsigned char slot = 0) {
        return path.contactless
                   ? NC_GetPanNoCardHldName(icdev, out.pan.data(), &out.pan_length, out.name.data(), &out.name_length)
                   : ICC_GetPanNoCardHldName(icdev, slot, out.pan.data(), &out.pan_length, out.name.data(),
                                             &out.name_length);
    }

    // The APDUs of the full walk of load_card up to the record `last` of SFI 2.
    std::vector<Bytes> full_walk(const Path& path, int last) const {
        std::vector<Bytes> apdus{select(bytes_of(path.directory)), read_record(1, 1), select(aid), gpo};
        for (int r = 1; r <= last; ++r) apdus.push_back(read_record(r, 2));
        return apdus;
    }

    ScriptedTerminal os;
    ScriptedCard card;
    int icdev = 0;
};

TEST_F(BankWalk, ReadsNameAndPanFromTheRecordsOnBothPaths) {
    for (const Path& path : paths) {
        card = {};
        load_card(path);
        Outputs out;
        ASSERT_EQ(read(path, out), 0) << path.name;
        EXPECT_EQ(out.pan_text(), pan_digits) << path.name;
        EXPECT_EQ(out.name_text(), holder) << path.name;  // trailing blanks kept
        EXPECT_EQ(card.apdus, full_walk(path, 2)) << path.name;
        EXPECT_EQ(card.activations, std::vector<std::uint8_t>{path.card_class}) << path.name;
        EXPECT_TRUE(card.deactivations.empty()) << path.name;  // the session stays open
    }
    EXPECT_EQ(select(bytes_of(contactless.directory)),
              (Bytes{0x00, 0xA4, 0x04, 0x00, 0x0E, 0x32, 0x50, 0x41, 0x59, 0x2E, 0x53, 0x59, 0x53, 0x2E, 0x44, 0x44,
                     0x46, 0x30, 0x31, 0x00}));
}

// The extended name 9F0B counts only without contact; the walk stops where the
// second value appears.
TEST_F(BankWalk, ExtendedNameAndWhereTheWalkStops) {
    for (const Path& path : paths) {
        card = {};
        load_card(path);
        card.records[{2, 1}] = record({tlv({0x9F, 0x0B}, bytes_of("EXTENDED NAME")), name_item(holder)});
        card.records[{2, 2}] = record({pan_item(pan_bcd)});
        card.records[{2, 3}] = record({name_item("NOT READ")});
        card.processing_options = gpo_reply({0x10, 0x01, 0x03, 0x00});
        Outputs out;
        ASSERT_EQ(read(path, out), 0) << path.name;
        EXPECT_EQ(out.name_text(), path.contactless ? "EXTENDED NAME" : holder) << path.name;
        EXPECT_EQ(out.pan_text(), pan_digits) << path.name;
        EXPECT_EQ(card.apdus, full_walk(path, 2)) << path.name;
    }
}

TEST_F(BankWalk, ContactlessTakesTrack2FromTheProcessingOptions) {
    const Bytes track2{0x62, 0x22, 0x02, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0xD4, 0x91, 0x22, 0x01};
    for (const Path& path : paths) {
        card = {};
        load_card(path);
        card.processing_options = with_9000(
            tlv({0x77}, concat({tlv({0x82}, {0x7C, 0x00}), tlv({0x57}, track2), name_item("LI SI"),
                                tlv({0x94}, {0x10, 0x01, 0x02, 0x00})})));
        Outputs out;
        out.pan.fill('x');
        if (path.contactless) {
            ASSERT_EQ(read(path, out), 0);
            EXPECT_EQ(out.pan_length, 18);
            EXPECT_STREQ(reinterpret_cast<const char*>(out.pan.data()), "622202123456789012");
            EXPECT_EQ(out.name_text(), "LI SI");
            EXPECT_EQ(card.apdus, full_walk(path, 0));  // no record read
        } else {
            // Nothing taken from the GPO reply; read as format 1 its "AFL" names no
            // record of this card, so the walk runs out.
            ASSERT_EQ(read(path, out), -21);
            EXPECT_EQ(out.pan_length, 0);
            EXPECT_EQ(out.name_length, 0);
        }
    }
}

TEST_F(BankWalk, UnusablePanItemsDoNotCount) {
    for (const Bytes& bad : {Bytes{}, Bytes(20, 0x12)}) {  // empty, or longer than any PAN
        card = {};
        load_card(contact);
        card.records[{2, 2}] = record({pan_item(bad), tlv({0x9F, 0x1F}, {0x01})});  // not last: an empty 5A is found
        card.records[{2, 3}] = record({pan_item(pan_bcd)});
        card.processing_options = gpo_reply({0x10, 0x01, 0x03, 0x00});
        Outputs out;
        ASSERT_EQ(read(contact, out), 0);
        EXPECT_EQ(out.pan_text(), pan_digits);
        EXPECT_EQ(card.apdus, full_walk(contact, 3));
    }
}

TEST_F(BankWalk, RecordsUsedUpCloseTheSessionWithMinus21) {
    for (const Path& path : paths) {
        card = {};
        load_card(path);
        card.records.erase({2, 2});
        Outputs out;
        EXPECT_EQ(read(path, out), -21) << path.name;
        EXPECT_EQ(out.name_text(), holder);  // what was found stays, the result tells
        EXPECT_EQ(out.pan_length, 0);
        EXPECT_EQ(card.deactivations, std::vector<std::uint8_t>{path.card_class}) << path.name;
    }
}

// Each case changes the card of load_card; the walk ends with `result` after `sent` APDUs.
struct Failure {
    const char* what;
    std::function<void(ScriptedCard&, const Path&)> change;
    int result;
    std::size_t sent;
    bool closes = false;
};

const Failure failures[] = {
    {"directory refused", [](ScriptedCard& c, const Path& p) { c.selects.erase(bytes_of(p.directory)); }, -19, 1},
    {"one-byte directory reply", [](ScriptedCard& c, const Path& p) { c.selects[bytes_of(p.directory)] = {0x90}; },
     -19, 1},
    {"directory record refused", [](ScriptedCard& c, const Path&) { c.records.erase({1, 1}); }, -19, 2},
    {"no application", [](ScriptedCard& c, const Path&) { c.records[{1, 1}] = record({tlv({0x50}, {0x41})}); }, -21,
     2},
    {"application refused", [](ScriptedCard& c, const Path&) { c.selects.erase(aid); }, -19, 3},
    {"no PDOL", [](ScriptedCard& c, const Path&) { c.selects[aid] = with_9000(tlv({0x6F}, tlv({0x84}, aid))); }, -21,
     3},
    {"GPO refused", [](ScriptedCard& c, const Path&) { c.processing_options = {0x69, 0x85}; }, -19, 4},
};

TEST_F(BankWalk, FailuresOfTheSteps) {
    for (const Path& path : paths) {
        for (const Failure& f : failures) {
            card = {};
            load_card(path);
            f.change(card, path);
            Outputs out;
            EXPECT_EQ(read(path, out), f.result) << path.name << ": " << f.what;
            EXPECT_EQ(card.apdus.size(), f.sent) << path.name << ": " << f.what;
            EXPECT_TRUE(card.deactivations.empty()) << path.name << ": " << f.what;
        }
    }
}

// The walk repeats only READ RECORD on 6Cxx; on the contact path the exchange
// itself follows the card, up to its bound.
TEST_F(BankWalk, GpoAnsweredWith6CIsNotRepeatedByTheWalk) {
    for (const Path& path : paths) {
        card = {};
        load_card(path);
        card.processing_options = {0x6C, 0x10};
        Outputs out;
        EXPECT_EQ(read(path, out), -19);
        EXPECT_EQ(card.apdus.size(), path.contactless ? 4u : 3u + 65u) << path.name;
        EXPECT_EQ(card.apdus.back().back(), path.contactless ? 0x00 : 0x10) << path.name;
    }
}

// A SELECT has room for a name of 34 bytes: a longer application name is not sent.
TEST_F(BankWalk, ApplicationNamesFitTheSelectCommand) {
    for (const std::size_t length : {34u, 35u}) {
        card = {};
        load_card(contact);
        const Bytes long_aid(length, 0xA0);
        card.records[{1, 1}] = record({tlv({0x61}, tlv({0x4F}, long_aid))});
        Outputs out;
        EXPECT_NE(read(contact, out), 0) << length;  // the card knows no such application
        if (length == 34) EXPECT_EQ(card.apdus.at(2), select(long_aid));
        else EXPECT_EQ(card.apdus.size(), 2u);
    }
}

TEST_F(BankWalk, DirectoryRecordIsOptionalOnlyWithoutContact) {
    const auto directory_with = [](const Path& p, const Bytes& inside) {
        return with_9000(tlv({0x6F}, concat({tlv({0x84}, bytes_of(p.directory)), tlv({0xA5}, inside)})));
    };
    const Bytes entries = tlv({0xBF, 0x0C}, tlv({0x61}, tlv({0x4F}, aid)));
    for (const Bytes& directory_sfi : {Bytes{}, tlv({0x88}, {})}) {  // no 88, or an empty one
        for (const Path& path : paths) {
            card = {};
            load_card(path);
            card.selects[bytes_of(path.directory)] = directory_with(path, concat({directory_sfi, entries}));
            Outputs out;
            const int result = read(path, out);
            if (path.contactless) {
                EXPECT_EQ(result, 0);
                // The application straight from the SELECT reply: no READ RECORD before it.
                EXPECT_EQ(card.apdus.at(1), select(aid));
            } else {
                EXPECT_EQ(result, -21);
                EXPECT_EQ(card.apdus.size(), 1u);
                // Only an empty 88 closes the session.
                EXPECT_EQ(card.deactivations.size(), directory_sfi.empty() ? 0u : 1u);
            }
        }
    }
}

TEST_F(BankWalk, EndlessMoreDataIsFollowedAtMost64Times) {
    load_card(contactless);
    os.respond = [this](const Bytes& request) {
        const Bytes payload(request.begin() + 3, request.end() - 2);
        if (payload[1] == 0x31) {
            card.apdus.emplace_back(payload.begin() + 3, payload.end());
            return make_reply(0, {0x61, 0x01});
        }
        return card.respond(request);
    };
    Outputs out;
    EXPECT_EQ(read(contactless, out), -19);
    EXPECT_EQ(card.apdus.size(), 65u);
}

TEST_F(BankWalk, OversizedDataStaysWithinTheWorkAreas) {
    // A record over 500 bytes is refused like a card refusal: its entry ends.
    load_card(contact);
    card.records[{2, 1}] = record({name_item(holder), tlv({0x9F, 0x4D}, Bytes(500, 0x01))});
    card.records[{2, 3}] = record({name_item(std::string(480, 'N'))});
    card.records[{2, 2}] = record({pan_item(pan_bcd)});
    card.processing_options = gpo_reply({0x10, 0x01, 0x01, 0x00, 0x10, 0x02, 0x03, 0x00});
    Outputs out;
    ASSERT_EQ(read(contact, out), 0);
    EXPECT_EQ(out.name_length, 480);
    EXPECT_EQ(out.pan_text(), pan_digits);

    // Over the contactless exchange's 300 bytes the directory cannot be read.
    card = {};
    load_card(contactless);
    card.selects[bytes_of(contactless.directory)] = with_9000(tlv({0x6F}, Bytes(300, 0x00)));
    EXPECT_EQ(read(contactless, out), -19);
}

// 33 answer bytes fit the contactless GPO command but not the contact one.
TEST_F(BankWalk, PdolAnswerMustFitTheCommand) {
    const Bytes long_pdol{0x9F, 0x66, 0x04, 0x9F, 0x02, 0x06, 0x9F, 0x03, 0x06, 0x9F, 0x1A, 0x02, 0x95,
                          0x05, 0x5F, 0x2A, 0x02, 0x9A, 0x03, 0x9C, 0x01, 0x9F, 0x37, 0x04};
    for (const Path& path : paths) {
        card = {};
        load_card(path);
        card.selects[aid] = with_9000(tlv({0x6F}, tlv({0xA5}, tlv({0x9F, 0x38}, long_pdol))));
        Outputs out;
        const int result = read(path, out);
        if (path.contactless) {
            EXPECT_EQ(result, 0);
            EXPECT_EQ(card.apdus.at(3).size(), 41u);
            EXPECT_EQ(card.apdus.at(3)[4], 0x23);
        } else {
            EXPECT_EQ(result, -19);
            EXPECT_EQ(card.apdus.size(), 3u);  // no GPO sent
        }
    }
}

TEST_F(BankWalk, NullOutputsAreRefusedBeforeAnythingIsSent) {
    unsigned short length = 0;
    std::array<std::uint8_t, 40> buffer{};
    EXPECT_EQ(NC_GetPanNoCardHldName(icdev, nullptr, &length, buffer.data(), &length), -19);
    EXPECT_EQ(ICC_GetPanNoCardHldName(icdev, 0, buffer.data(), &length, buffer.data(), nullptr), -19);
    EXPECT_EQ(GetPanNoCardHldName(icdev, buffer.data(), nullptr, buffer.data(), &length), -19);
    EXPECT_TRUE(os.requests.empty());
}

TEST_F(BankWalk, CardStateChoosesThePath) {
    struct Case {
        std::uint16_t status;
        std::uint8_t state;
        std::uint8_t activated;
    };
    const Case cases[] = {{0, 0, 0xC0}, {0, 2, 0xC0}, {0, 1, 0xC1}, {0, 3, 0xC1}, {0x0005, 0, 0xC1}};
    for (const Case& c : cases) {
        card = {};
        load_card(c.activated == 0xC0 ? contact : contactless);
        os.requests.clear();
        os.respond = [&](const Bytes& request) {
            if (request[3] == 0x00 && request[4] == 0x07) return make_reply(c.status, {c.state});
            return card.respond(request);
        };
        Outputs out;
        EXPECT_EQ(GetPanNoCardHldName(icdev, out.pan.data(), &out.pan_length, out.name.data(), &out.name_length), 0);
        EXPECT_EQ(Bytes(os.requests[0].begin() + 3, os.requests[0].end() - 2), (Bytes{0x00, 0x07, 0x00}));
        EXPECT_EQ(card.activations, std::vector<std::uint8_t>{c.activated}) << int(c.state);
        EXPECT_EQ(out.pan_text(), pan_digits);
    }
}

}  // namespace
}  // namespace qz::test
