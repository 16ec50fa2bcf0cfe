// The HEX reader on records of mixed lengths and on hostile files.
#include <gtest/gtest.h>

#include <string>

#include "firmware/intel_hex.h"
#include "support/scripted_terminal.h"

namespace qz::test {
namespace {

firmware::HexImage parse(const std::string& text) {
    return firmware::parse_hex_image(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

TEST(IntelHex, RecordsOfMixedLengthsInFileOrder) {
    const std::string text =
        ":020000040001F9\r\n"
        ":1000100000112233445566778899AABBCCDDEEFF78\n"
        ":0400000001020304F2\n"                // lower address, later in the file
        ":03000000aabbccFF\n"                  // lower-case digits, wrong checksum: not checked
        ":00000001FF\n"
        ":0100000099FF\n";                     // behind the end record: not read
    const auto image = parse(text);
    ASSERT_EQ(image.status, 0);
    EXPECT_EQ(image.bytes, (Bytes{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD,
                                  0xEE, 0xFF, 0x01, 0x02, 0x03, 0x04, 0xAA, 0xBB, 0xCC}));
}

TEST(IntelHex, HostileFilesGiveAClearResult) {
    struct Case {
        std::string text;
        int status;
    };
    const std::vector<Case> cases{
        {"", -86},
        {":0400000001020304F2\n", -86},                      // no end record
        {":FF000000AA:00000001FF", -86},                     // length past the end record
        {":04000000010203:00000001FF", -86},                 // record cut short
        {":0400000001G20304F2\n:00000001FF", -86},           // not a hex digit in the data
        {":04zz000001020304F2\n:00000001FF", -86},           // nor in the address
        {":\n:00000001FF", -86},                             // a lone mark
        {"garbage\xff\n:00000001FF", 0},                     // nothing but noise before the end
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(parse(c.text).status, c.status);
    }
}

}  // namespace
}  // namespace qz::test
