// Each fault the simulator injects into a reply gives, on each link, the status
// the link rules name for it, and the link serves the next command as before.
// The command is the simulator's diagnostic echo (00 E0), which answers its
// body, so that replies of any length can be damaged.
#include <optional>
#include <vector>

#include "e2e/e2e_fixture.h"
#include "link/link_state.h"
#include "link/transact.h"
#include "qz_32.h"

namespace qz::test {
namespace {

constexpr std::uint8_t echo = 0xE0;
// Short read time-outs keep the waits for missing replies and bytes short. On
// the serial line every missing byte costs one of them.
constexpr std::uint32_t read_ms = 150;

struct FaultCase {
    const char* name;
    nlohmann::json fault;  // the scenario's rule, without class, instruction and count
    std::size_t body;      // size of the echoed body
    // Results on each link; nothing where the case does not apply to the link.
    std::optional<int> hid;
    std::optional<int> serial;
};

std::string repeated_hex(const char* byte, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += byte;
    return text;
}

// A body of 13 bytes gives a reply frame of 21; one of 600 a frame of 608,
// which travels in three HID reports (254, 254, 100).
const std::vector<FaultCase>& fault_cases() {
    static const std::vector<FaultCase> cases{
        {"Silence", {{"kind", "silence"}}, 13, -17, -34},
        {"BadBcc", {{"kind", "bad_bcc"}}, 13, -36, -36},
        {"BadBccOfALongFrame", {{"kind", "bad_bcc"}}, 600, -36, -36},
        {"WrongEtx", {{"kind", "wrong_etx"}}, 13, -35, -35},
        {"WrongEtxOfALongFrame", {{"kind", "wrong_etx"}}, 600, -35, -35},
        // BCC and ETX missing: read as zeros on HID, never arriving on the line.
        {"CutShortFrame", {{"kind", "cut"}, {"keep", 19}}, 13, -35, -35},
        {"CutBeforeTheLastByte", {{"kind", "cut"}, {"keep", 607}}, 600, -35, -35},
        // The third report never comes; on the line the 308 missing bytes would
        // each wait out the read time, so the case is left to HID.
        {"CutBeforeTheLastReport", {{"kind", "cut"}, {"keep", 300}}, 600, -17, std::nullopt},
        {"OversizedBeyondTheFrameBuffer", {{"kind", "oversized"}}, 13, -38, -38},
        {"OversizedBeyondTheReplyArea", {{"kind", "oversized"}, {"len", 300}}, 13, -38, -38},
        // On HID the STX is looked for in each of three reports; on the line it
        // must be the first byte.
        {"GarbageBeforeStx", {{"kind", "garbage"}}, 13, 0, -34},
        {"GarbageFillingTheFirstReport", {{"kind", "garbage"}, {"bytes", {{"hex", repeated_hex("AA", 254)}}}}, 13, 0,
         -34},
        {"GarbageFillingThreeReports", {{"kind", "garbage"}, {"bytes", {{"hex", repeated_hex("AA", 762)}}}}, 13, -34,
         -34},
        {"StatusBelow8000", {{"kind", "status"}, {"status", "0x6A82"}}, 13, -27266, -27266},
        {"StatusAbove8000", {{"kind", "status"}, {"status", "0x9000"}}, 13, 28672, 28672},
    };
    return cases;
}

struct LinkFault {
    Link link;
    const FaultCase* fault;
    int expected;
};

void PrintTo(const LinkFault& fault, std::ostream* out) {
    *out << link_name(fault.link) << ' ' << fault.fault->name << " gives " << fault.expected;
}

std::vector<LinkFault> link_faults() {
    std::vector<LinkFault> all;
    for (const FaultCase& fault : fault_cases()) {
        if (fault.hid) all.push_back({Link::hid, &fault, *fault.hid});
        if (fault.serial) all.push_back({Link::serial, &fault, *fault.serial});
    }
    return all;
}

std::vector<std::uint8_t> echo_payload(std::size_t body, std::uint8_t first) {
    std::vector<std::uint8_t> payload{0x00, echo};
    for (std::size_t i = 0; i < body; ++i) payload.push_back(static_cast<std::uint8_t>(first + i * 3));
    return payload;
}

class LinkFaults : public SimulatorTest, public ::testing::WithParamInterface<LinkFault> {};

TEST_P(LinkFaults, GiveTheLinkStatusAndLeaveTheLinkUsable) {
    const LinkFault& param = GetParam();
    if (!start(param.link, nlohmann::json::array({fault_once(echo, param.fault->fault)}))) return;
    Device device;
    ASSERT_GT(device.handle(), 1);
    link::set_link_timeouts(read_ms, 0);

    // The reply area holds a little more than the echo, as a command's would.
    const auto request = echo_payload(param.fault->body, 0x10);
    std::vector<std::uint8_t> reply(param.fault->body + 16, 0xEE);
    int length = -1;
    EXPECT_EQ(link::dev_transact(device.handle(), request, length, reply), param.expected);
    if (param.expected == 0) {
        ASSERT_EQ(length, static_cast<int>(param.fault->body));
        EXPECT_TRUE(std::equal(request.begin() + 2, request.end(), reply.begin()));
    } else {
        EXPECT_EQ(length, 0);
        EXPECT_EQ(reply[0], 0) << "a failed transaction leaves the first reply byte 0";
    }

    // The fault hit one reply: the same command, and another, go through again.
    const auto again = echo_payload(param.fault->body, 0x61);
    ASSERT_EQ(link::dev_transact(device.handle(), again, length, reply), 0);
    ASSERT_EQ(length, static_cast<int>(param.fault->body));
    EXPECT_TRUE(std::equal(again.begin() + 2, again.end(), reply.begin()));
    unsigned char version_length = 0;
    std::array<unsigned char, 256> version{};
    EXPECT_EQ(get_version(device.handle(), &version_length, version.data()), 0);
    EXPECT_EQ(version_length, 12);
}

INSTANTIATE_TEST_SUITE_P(Faults, LinkFaults, ::testing::ValuesIn(link_faults()), [](const auto& info) {
    return link_name(info.param.link) + "_" + info.param.fault->name;
});

}  // namespace
}  // namespace qz::test
