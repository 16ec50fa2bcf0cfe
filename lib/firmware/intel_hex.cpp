#include "firmware/intel_hex.h"

#include <algorithm>
#include <array>
#include <new>
#include <optional>
#include <string_view>

namespace qz::firmware {
namespace {

constexpr std::string_view end_record = ":00000001";
constexpr std::uint8_t record_mark = ':';
constexpr std::uint8_t data_record = 0x00;
// ':', length, address, type and checksum: the characters of a record besides its data.
constexpr std::size_t record_frame = 11;
constexpr std::size_t type_offset = 7;
constexpr std::size_t data_offset = 9;
constexpr std::int16_t not_hex = -1;

constexpr std::array<std::int16_t, 256> digit_values = [] {
    std::array<std::int16_t, 256> values{};
    values.fill(not_hex);
    for (int digit = 0; digit < 10; ++digit) values['0' + digit] = static_cast<std::int16_t>(digit);
    for (int digit = 0; digit < 6; ++digit) {
        values['A' + digit] = static_cast<std::int16_t>(10 + digit);
        values['a' + digit] = static_cast<std::int16_t>(10 + digit);
    }
    return values;
}();

// The value of the two digits at `at`, or not_hex.
int hex_pair_value(std::span<const std::uint8_t> text, std::size_t at) {
    const int high = digit_values[text[at]];
    const int low = digit_values[text[at + 1]];
    return (high | low) < 0 ? not_hex : (high << 4) | low;
}

// Appends the data of the record at `at` (a ':') when it is a data record; gives
// the characters the record takes, or nothing when it is malformed.
std::optional<std::size_t> take_record(std::span<const std::uint8_t> text, std::size_t at,
                                       std::vector<std::uint8_t>& image) {
    if (text.size() - at < record_frame) return std::nullopt;
    const int length = hex_pair_value(text, at + 1);
    if (length == not_hex) return std::nullopt;
    const std::size_t size = record_frame + 2 * static_cast<std::size_t>(length);
    if (text.size() - at < size) return std::nullopt;
    for (std::size_t digit = at + 3; digit < at + data_offset; digit += 2)
        if (hex_pair_value(text, digit) == not_hex) return std::nullopt;
    if (hex_pair_value(text, at + size - 2) == not_hex) return std::nullopt;
    const bool data = hex_pair_value(text, at + type_offset) == data_record;
    for (std::size_t digit = at + data_offset; digit < at + size - 2; digit += 2) {
        const int value = hex_pair_value(text, digit);
        if (value == not_hex) return std::nullopt;
        if (data) image.push_back(static_cast<std::uint8_t>(value));
    }
    return size;
}

}  // namespace

HexImage parse_hex_image(std::span<const std::uint8_t> text) {
    const auto end = std::search(text.begin(), text.end(), end_record.begin(), end_record.end());
    if (end == text.end()) return {status_no_image, {}};
    const auto records = text.first(static_cast<std::size_t>(end - text.begin()));

    HexImage result;
    try {
        result.bytes.reserve(records.size() / 2);
    } catch (const std::bad_alloc&) {
        return {status_out_of_memory, {}};
    }
    std::size_t at = 0;
    while (at < records.size()) {
        if (records[at] != record_mark) {
            ++at;  // line ends and anything else between records
            continue;
        }
        const auto taken = take_record(records, at, result.bytes);
        if (!taken) return {status_no_image, {}};
        at += *taken;
    }
    return result;
}

HexImage read_hex_image(const std::filesystem::path& path) {
    const FileBytes file = read_firmware_file(path, status_hex_short_read);
    if (file.status != 0) return {file.status, {}};
    return parse_hex_image(file.bytes);
}

}  // namespace qz::firmware
