#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>

#include "card_fixture.h"
#include "qz_32.h"

namespace qz::test {
namespace {

using Contact = CardTest;

const std::array<std::uint8_t, 5> slot_classes{0xC0, 0xC2, 0xC3, 0xC4, 0xC5};
const Bytes atr{0x3B, 0x6E, 0x00, 0x00, 0x80};

// One activation export, called for a slot: its result, the answer and the length reported.
struct Activation {
    const char* name;
    std::uint8_t parameter;
    bool hex;
    std::function<int(int, unsigned char, void*, unsigned char*)> call;
};

const Activation activations[] = {
    {"ICC_PowerOn", 0x00, false,
     [](int d, unsigned char s, void* a, unsigned char* l) { return ICC_PowerOn(d, s, static_cast<unsigned char*>(a), l); }},
    {"ICC_PowerOn_hex", 0x00, true,
     [](int d, unsigned char s, void* a, unsigned char* l) { return ICC_PowerOn_hex(d, s, static_cast<char*>(a), l); }},
    {"ICC_PowerOn_Baud", 0x30, false,
     [](int d, unsigned char s, void* a, unsigned char* l) {
         return ICC_PowerOn_Baud(d, s, 0x30, static_cast<unsigned char*>(a), l);
     }},
    {"ICC_Reset", 0x01, false,
     [](int d, unsigned char s, void* a, unsigned char* l) { return ICC_Reset(d, s, static_cast<unsigned char*>(a), l); }},
    {"ICC_Reset_Baud", 0x31, false,
     [](int d, unsigned char s, void* a, unsigned char* l) {
         return ICC_Reset_Baud(d, s, 0x30, static_cast<unsigned char*>(a), l);
     }},
};

TEST_F(Contact, ActivationsAddressEachSlotByItsClass) {
    for (const Activation& a : activations) {
        for (unsigned char slot = 0; slot < 5; ++slot) {
            os.requests.clear();
            answer({atr});
            std::array<char, 64> out{};
            unsigned char length = 0xEE;
            ASSERT_EQ(a.call(icdev, slot, out.data(), &length), 0) << a.name << slot;
            EXPECT_EQ(payloads(), (std::vector<Bytes>{{slot_classes[slot], 0x30, a.parameter}})) << a.name << slot;
            if (a.hex) {
                EXPECT_STREQ(out.data(), "3B6E000080");
                EXPECT_EQ(length, 10);
            } else {
                EXPECT_EQ(Bytes(out.begin(), out.begin() + 5), atr);
                EXPECT_EQ(length, 5);
            }
        }
    }
}

TEST_F(Contact, ActivationsClearTheLengthAndRefuseSlotAbove4) {
    for (const Activation& a : activations) {
        std::array<char, 64> out{};
        unsigned char length = 0xEE;
        EXPECT_EQ(a.call(icdev, 5, out.data(), &length), -19) << a.name;
        EXPECT_EQ(length, 0) << a.name;
        EXPECT_EQ(a.call(icdev, 0, nullptr, &length), -19) << a.name;

        replies.push_back(make_reply(0x6F00));
        length = 0xEE;
        EXPECT_EQ(a.call(icdev, 0, out.data(), &length), -28416) << a.name;
        EXPECT_EQ(length, 0) << a.name;
    }
    EXPECT_EQ(os.requests.size(), std::size(activations));  // only the failing ones went out
}

TEST_F(Contact, OnlyTheFiveSpeedCodesAreTaken) {
    for (int baud = 0; baud < 256; ++baud) {
        os.requests.clear();
        std::array<std::uint8_t, 64> out{};
        unsigned char length = 0;
        const bool valid = baud >= 0x10 && baud <= 0x50 && baud % 0x10 == 0;
        const auto b = static_cast<unsigned char>(baud);
        EXPECT_EQ(ICC_PowerOn_Baud(icdev, 2, b, out.data(), &length), valid ? 0 : -19) << baud;
        EXPECT_EQ(ICC_Reset_Baud(icdev, 2, b, out.data(), &length), valid ? 0 : -19) << baud;
        if (valid)
            EXPECT_EQ(payloads(), (std::vector<Bytes>{{0xC3, 0x30, b}, {0xC3, 0x30, static_cast<std::uint8_t>(b + 1)}}));
        else
            EXPECT_TRUE(os.requests.empty()) << baud;
    }
}

TEST_F(Contact, PowerOffPerSlot) {
    for (unsigned char slot = 0; slot < 5; ++slot) EXPECT_EQ(ICC_PowerOff(icdev, slot), 0);
    EXPECT_EQ(ICC_PowerOff(icdev, 5), -19);
    std::vector<Bytes> expected;
    for (std::uint8_t c : slot_classes) expected.push_back({c, 0x32, 0x00});
    EXPECT_EQ(payloads(), expected);
}

// The binary and the hex exchange, called alike: the response comes back as bytes.
struct Exchange {
    const char* name;
    std::function<int(int, unsigned char, const Bytes&, Bytes&)> call;
};

Bytes bytes_of(const std::string& hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::string hex_of(const Bytes& bytes) {
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (auto b : bytes) text += {digits[b >> 4], digits[b & 15]};
    return text;
}

const Exchange exchanges[] = {
    {"binary",
     [](int d, unsigned char s, const Bytes& command, Bytes& response) {
         std::vector<std::uint8_t> out(1100, 0xEE);
         unsigned short length = 0xEEEE;
         const int result = ICC_CommandExchange(d, s, command.data(), static_cast<unsigned short>(command.size()),
                                                out.data(), &length);
         if (length != 0xEEEE) response.assign(out.begin(), out.begin() + length);
         return result;
     }},
    {"hex",
     [](int d, unsigned char s, const Bytes& command, Bytes& response) {
         std::string out(4200, '\0');
         const int result = ICC_CommandExchange_hex(d, s, hex_of(command).c_str(), out.data());
         response = bytes_of(out.c_str());
         return result;
     }},
};

const Bytes read_binary{0x00, 0xB0, 0x00, 0x00, 0x00};

Bytes data_of(std::size_t n, std::uint8_t first) {
    Bytes d(n);
    for (std::size_t i = 0; i < n; ++i) d[i] = static_cast<std::uint8_t>(first + i);
    return d;
}

Bytes with_sw(const Bytes& data, std::uint8_t sw1, std::uint8_t sw2) { return concat({data, {sw1, sw2}}); }

TEST_F(Contact, ExchangeFollowsTheCard) {
    struct Case {
        const char* what;
        std::vector<Bytes> card;  // the card's replies in turn
        std::vector<Bytes> apdus;  // what it is sent, the first being read_binary
        Bytes response;
    };
    const Bytes d16 = data_of(16, 0x10);
    const Bytes d10 = data_of(10, 0xA0);
    const Bytes d32 = data_of(32, 0x40);
    const Case cases[] = {
        {"9000 alone", {{0x90, 0x00}}, {read_binary}, {0x90, 0x00}},
        {"61 10", {{0x61, 0x10}, with_sw(d16, 0x90, 0x00)}, {read_binary, {0x00, 0xC0, 0x00, 0x00, 0x10}},
         with_sw(d16, 0x90, 0x00)},
        {"data then 61 20", {with_sw(d10, 0x61, 0x20), with_sw(d32, 0x90, 0x00)},
         {read_binary, {0x00, 0xC0, 0x00, 0x00, 0x20}}, concat({d10, d32, {0x90, 0x00}})},
        {"2 data bytes before 61 are lost", {with_sw({1, 2}, 0x61, 0x20), with_sw(d32, 0x90, 0x00)},
         {read_binary, {0x00, 0xC0, 0x00, 0x00, 0x20}}, with_sw(d32, 0x90, 0x00)},
        {"chain ending in 6A82 keeps only the last", {with_sw(d10, 0x61, 0x05), {0x6A, 0x82}},
         {read_binary, {0x00, 0xC0, 0x00, 0x00, 0x05}}, {0x6A, 0x82}},
        {"6C 08 corrects Le", {{0x6C, 0x08}, with_sw(data_of(8, 0), 0x90, 0x00)},
         {read_binary, {0x00, 0xB0, 0x00, 0x00, 0x08}}, with_sw(data_of(8, 0), 0x90, 0x00)},
        {"6C after GET RESPONSE", {with_sw(d10, 0x61, 0x20), {0x6C, 0x10}, with_sw(d16, 0x90, 0x00)},
         {read_binary, {0x00, 0xC0, 0x00, 0x00, 0x20}, {0x00, 0xC0, 0x00, 0x00, 0x10}}, concat({d10, d16, {0x90, 0x00}})},
        {"other status words end it", {with_sw(d10, 0x62, 0x83)}, {read_binary}, with_sw(d10, 0x62, 0x83)},
    };
    for (const Exchange& e : exchanges) {
        for (const Case& c : cases) {
            os.requests.clear();
            for (const Bytes& reply : c.card) answer({reply});
            Bytes response{0xFF};
            EXPECT_EQ(e.call(icdev, 4, read_binary, response), 0) << e.name << ": " << c.what;
            EXPECT_EQ(response, c.response) << e.name << ": " << c.what;
            std::vector<Bytes> expected;
            for (const Bytes& apdu : c.apdus) expected.push_back(concat({{0xC5, 0x31, 0x00}, apdu}));
            EXPECT_EQ(payloads(), expected) << e.name << ": " << c.what;
            replies.clear();
        }
    }
}

TEST_F(Contact, FollowingStopsAfterSixtyFourRounds) {
    for (const Exchange& e : exchanges) {
        for (const Bytes& endless : {Bytes{0x61, 0x01}, Bytes{0x6C, 0x01}}) {
            os.requests.clear();
            os.respond = [&](const Bytes&) { return make_reply(0, endless); };
            Bytes response;
            EXPECT_EQ(e.call(icdev, 0, read_binary, response), 0) << e.name;
            EXPECT_EQ(os.requests.size(), 65u) << e.name;  // the command and 64 that follow
            EXPECT_EQ(response, endless) << e.name;
        }
    }
}

TEST_F(Contact, FailuresLeaveTheResponseEmpty) {
    for (const Exchange& e : exchanges) {
        // A link failure in the middle of a chain drops what was gathered.
        answer({with_sw(data_of(10, 0), 0x61, 0x10)});
        replies.push_back(make_reply(0x0005));
        Bytes response{0xFF};
        EXPECT_EQ(e.call(icdev, 0, read_binary, response), -5) << e.name;
        EXPECT_TRUE(response.empty()) << e.name;
        answer({{0x90}});  // no status word
        EXPECT_EQ(e.call(icdev, 0, read_binary, response), -39) << e.name;
        EXPECT_TRUE(response.empty()) << e.name;
    }
    unsigned short length = 0xEEEE;
    std::array<std::uint8_t, 4> out{};
    EXPECT_EQ(ICC_CommandExchange(icdev, 0, read_binary.data(), 0, out.data(), &length), -19);
    EXPECT_EQ(length, 0);
    length = 0xEEEE;
    EXPECT_EQ(ICC_CommandExchange(icdev, 5, read_binary.data(), 5, out.data(), &length), -19);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(os.requests.size(), 6u);
}

TEST_F(Contact, ResponseAndApduLimits) {
    struct Limits {
        const Exchange& exchange;
        std::size_t apdu;
        std::size_t response;
    };
    for (const Limits& l : {Limits{exchanges[0], 1021, 1024}, Limits{exchanges[1], 2045, 2048}}) {
        const char* name = l.exchange.name;
        Bytes response;
        os.requests.clear();
        EXPECT_EQ(l.exchange.call(icdev, 0, Bytes(l.apdu + 1, 0x00), response), -19) << name;
        EXPECT_TRUE(os.requests.empty()) << name;
        answer({{0x90, 0x00}});
        EXPECT_EQ(l.exchange.call(icdev, 0, Bytes(l.apdu, 0x00), response), 0) << name;

        // Gathered data and the last reply fill the response exactly, or one byte too many.
        const std::size_t half = l.response / 2;
        answer({with_sw(Bytes(half, 1), 0x61, 0x00), with_sw(Bytes(half - 4, 2), 0x90, 0x00)});
        EXPECT_EQ(l.exchange.call(icdev, 0, read_binary, response), 0) << name;
        EXPECT_EQ(response.size(), l.response - 2) << name;
        answer({with_sw(Bytes(half, 1), 0x61, 0x00), with_sw(Bytes(half - 1, 2), 0x90, 0x00)});
        EXPECT_EQ(l.exchange.call(icdev, 0, read_binary, response), -38) << name;
        EXPECT_TRUE(response.empty()) << name;
        // So does gathering over several 61xx replies.
        answer({with_sw(Bytes(half, 1), 0x61, 0x00), with_sw(Bytes(half + 1, 2), 0x61, 0x00)});
        EXPECT_EQ(l.exchange.call(icdev, 0, read_binary, response), -38) << name;
        replies.clear();
    }
}

TEST_F(Contact, HexTwinChecksItsTextFirst) {
    std::string out = "untouched";
    EXPECT_EQ(ICC_CommandExchange_hex(icdev, 9, "00B0G0", out.data()), -1);
    EXPECT_EQ(ICC_CommandExchange_hex(icdev, 9, "00B00000", out.data()), -19);
    EXPECT_EQ(ICC_CommandExchange_hex(icdev, 0, "0", out.data()), -19);
    EXPECT_EQ(out, "untouched");
    EXPECT_TRUE(os.requests.empty());

    answer({{0x90, 0x00}});
    std::array<char, 16> text{};
    ASSERT_EQ(ICC_CommandExchange_hex(icdev, 1, "00b000000", text.data()), 0);  // odd digit dropped
    EXPECT_EQ(payloads(), (std::vector<Bytes>{{0xC2, 0x31, 0x00, 0x00, 0xB0, 0x00, 0x00}}));
    EXPECT_STREQ(text.data(), "9000");
}

}  // namespace
}  // namespace qz::test
