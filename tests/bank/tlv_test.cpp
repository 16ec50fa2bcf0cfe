#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "bank/tlv.h"

namespace qz::bank {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Search {
    TlvResult result;
    Bytes value;
    std::uint16_t length;
};

Search find_in(const Bytes& data, const Bytes& tag, std::size_t capacity = 500) {
    std::vector<std::uint8_t> area(capacity, 0xEE);
    std::uint16_t length = 0xBEEF;
    const TlvResult result = TlvFind(data, tag, area, length);
    Bytes value;
    if (result == TlvResult::found) value.assign(area.begin(), area.begin() + length);
    return {result, value, length};
}

struct Case {
    const char* what;
    Bytes data;
    Bytes tag;
    std::optional<Bytes> value;  // nothing: not found
};

// A directory reply: FCI template with a proprietary template holding an SFI, and an
// issuer discretionary template with two application templates.
const Bytes fci{0x6F, 0x1E, 0x84, 0x02, 0x31, 0x50,                                 //
                0xA5, 0x18, 0x88, 0x01, 0x01,                                       //
                0xBF, 0x0C, 0x12,                                                   //
                0x61, 0x07, 0x4F, 0x05, 0xA0, 0x00, 0x00, 0x03, 0x33,               //
                0x61, 0x07, 0x4F, 0x05, 0xA0, 0x00, 0x00, 0x00, 0x04, 0x90, 0x00};

const Case cases[] = {
    {"one-byte tag", {0x5A, 0x02, 0x12, 0x34}, {0x5A}, Bytes{0x12, 0x34}},
    {"after other items", {0x50, 0x01, 0x41, 0x5A, 0x01, 0x99}, {0x5A}, Bytes{0x99}},
    {"two-byte tag", {0x9F, 0x38, 0x03, 0x9F, 0x66, 0x04}, {0x9F, 0x38}, Bytes{0x9F, 0x66, 0x04}},
    {"three-byte tag", {0xDF, 0x81, 0x01, 0x01, 0x07}, {0xDF, 0x81, 0x01}, Bytes{0x07}},
    {"a tag of another length is passed over", {0xDF, 0x81, 0x01, 0x01, 0x07, 0xDF, 0x01, 0x01, 0x08}, {0xDF, 0x01},
     Bytes{0x08}},
    {"deep in templates", fci, {0x88}, Bytes{0x01}},
    {"first application in depth-first order", fci, {0x4F}, Bytes{0xA0, 0x00, 0x00, 0x03, 0x33}},
    {"a matching template is taken whole", fci, {0xBF, 0x0C},
     Bytes(fci.begin() + 14, fci.begin() + 32)},
    {"a matching template is not entered", {0x70, 0x03, 0x70, 0x01, 0x55}, {0x70}, Bytes{0x70, 0x01, 0x55}},
    {"the leading bytes of a longer tag match", {0x9F, 0x38, 0x01, 0x55}, {0x9F}, Bytes{0x55}},
    {"long form 81", [] { Bytes d{0x70, 0x81, 0x83, 0x57, 0x81, 0x80}; d.resize(6 + 128, 0x44); return d; }(), {0x57},
     Bytes(128, 0x44)},
    {"long form 82", [] { Bytes d{0x5F, 0x20, 0x82, 0x01, 0x2C}; d.resize(5 + 300, 0x20); return d; }(), {0x5F, 0x20},
     Bytes(300, 0x20)},
    {"long form with no length bytes", {0x5A, 0x80, 0x4F, 0x01, 0x07}, {0x4F}, Bytes{0x07}},
    {"00 and FF are tags, not filler", {0x00, 0x00, 0x5A, 0x01, 0x12}, {0x5A}, Bytes{0x12}},
    {"FF swallows the next byte into its tag", {0xFF, 0x5A, 0x01, 0x12}, {0x5A}, std::nullopt},
    {"zero length in the middle is found", {0x5F, 0x20, 0x00, 0x5A, 0x01, 0x12}, {0x5F, 0x20}, Bytes{}},
    {"trailing status word reads as tag 90", {0x5A, 0x01, 0x12, 0x90, 0x00}, {0x90}, std::nullopt},
    {"status word in the middle is found", {0x90, 0x00, 0x5A, 0x01, 0x12}, {0x90}, Bytes{}},
    {"missing tag", fci, {0x9F, 0x38}, std::nullopt},
    {"empty data", {}, {0x5A}, std::nullopt},
    {"empty tag", fci, {}, std::nullopt},
    // Truncated and hostile data.
    {"value past the end", {0x5A, 0x05, 0x12, 0x34}, {0x5A}, std::nullopt},
    {"length past the end", {0x5A}, {0x5A}, std::nullopt},
    {"long length bytes past the end", {0x5A, 0x82, 0x01}, {0x5A}, std::nullopt},
    {"tag never ends", {0x50, 0x01, 0x41, 0x9F, 0x81, 0x82}, {0x9F, 0x81}, std::nullopt},
    {"wanted tag longer than what is left", {0x50, 0x01, 0x41, 0x9F}, {0x9F, 0x38}, std::nullopt},
    {"template past the end hides what follows it", {0x70, 0x09, 0x5A, 0x01, 0x12}, {0x5A}, std::nullopt},
    {"an item that runs past its template skips to the template's end",
     {0x70, 0x03, 0x5A, 0x05, 0x12, 0x5A, 0x01, 0x34}, {0x5A}, Bytes{0x34}},
    {"huge long-form length", {0x5A, 0x88, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x12}, {0x5A},
     std::nullopt},
    {"empty template is not entered", {0x70, 0x00, 0x5A, 0x01, 0x12}, {0x5A}, Bytes{0x12}},
};

TEST(TlvFind, Cases) {
    for (const Case& c : cases) {
        const Search s = find_in(c.data, c.tag);
        if (c.value) {
            EXPECT_EQ(s.result, TlvResult::found) << c.what;
            EXPECT_EQ(s.value, *c.value) << c.what;
        } else {
            EXPECT_EQ(s.result, TlvResult::not_found) << c.what;
        }
    }
}

TEST(TlvFind, ZeroLengthMatchAtTheVeryEndIsNotFoundButSetsTheLength) {
    for (const Bytes& data : {Bytes{0x5A, 0x01, 0x12, 0x5F, 0x20, 0x00}, Bytes{0x70, 0x03, 0x5F, 0x20, 0x00}}) {
        const Search s = find_in(data, {0x5F, 0x20});
        EXPECT_EQ(s.result, TlvResult::not_found);
        EXPECT_EQ(s.length, 0);
    }
    // Inside a template that is followed by more data, the match ends the template
    // only; the search goes on behind it.
    const Search s = find_in({0x70, 0x03, 0x5F, 0x20, 0x00, 0x5F, 0x20, 0x01, 0x4B}, {0x5F, 0x20});
    EXPECT_EQ(s.result, TlvResult::found);
    EXPECT_EQ(s.value, Bytes{0x4B});
}

TEST(TlvFind, ValueLongerThanTheValueAreaIsNotFound) {
    Bytes data{0x5F, 0x20, 0x82, 0x01, 0xF5};  // 501 bytes
    data.resize(5 + 501, 0x41);
    EXPECT_EQ(find_in(data, {0x5F, 0x20}).result, TlvResult::not_found);
    EXPECT_EQ(find_in(data, {0x5F, 0x20}).length, 501);
    data[4] = 0xF4;  // 500 bytes fit
    data.pop_back();
    EXPECT_EQ(find_in(data, {0x5F, 0x20}).value.size(), 500u);
    EXPECT_EQ(find_in({0x5A, 0x03, 1, 2, 3}, {0x5A}, 2).result, TlvResult::not_found);
}

// Wraps `inner` in `depth` constructed items, using the long form where needed.
// The heads are worked out from the inside and written from the outside.
Bytes nest(const Bytes& inner, int depth) {
    std::vector<Bytes> heads;
    std::size_t size = inner.size();
    for (int i = 0; i < depth; ++i) {
        Bytes head{0xE1, 0x83, static_cast<std::uint8_t>(size >> 16), static_cast<std::uint8_t>(size >> 8),
                   static_cast<std::uint8_t>(size)};
        if (size < 0x80) head = {0xE1, static_cast<std::uint8_t>(size)};
        size += head.size();
        heads.push_back(std::move(head));
    }
    Bytes data;
    for (auto head = heads.rbegin(); head != heads.rend(); ++head) data.insert(data.end(), head->begin(), head->end());
    data.insert(data.end(), inner.begin(), inner.end());
    return data;
}

TEST(TlvFind, NestingOfAnyDepth) {
    for (int depth : {1, 2, 50, 240, 20000}) {
        const Search s = find_in(nest({0x5A, 0x02, 0x62, 0x22}, depth), {0x5A});
        EXPECT_EQ(s.result, TlvResult::found) << depth;
        EXPECT_EQ(s.value, (Bytes{0x62, 0x22})) << depth;
    }
    // A later sibling of a deep nest is still reached.
    Bytes data = nest({0x50, 0x01, 0x41}, 1000);
    data.insert(data.end(), {0x5A, 0x01, 0x77});
    EXPECT_EQ(find_in(data, {0x5A}).value, Bytes{0x77});
}

}  // namespace
}  // namespace qz::bank
