// Intel HEX files for the keyboard's loader. The image is the concatenation of
// the data records (type 00) in file order, up to the first end record
// ":00000001"; addresses, checksums and other record types play no part.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "firmware/firmware_file.h"

namespace qz::firmware {

// No end record, or a record before it that is cut short or holds a character
// that isn't a hex digit.
inline constexpr int status_no_image = -86;
inline constexpr int status_hex_short_read = -88;

struct HexImage {
    int status = 0;  // 0, status_no_image or status_out_of_memory
    std::vector<std::uint8_t> bytes;
};

// Reads the image from the text of a HEX file. Stays inside `text` whatever it holds.
HexImage parse_hex_image(std::span<const std::uint8_t> text);

// The image of the file `path`: also status_file_unopenable and status_hex_short_read.
HexImage read_hex_image(const std::filesystem::path& path);

}  // namespace qz::firmware
