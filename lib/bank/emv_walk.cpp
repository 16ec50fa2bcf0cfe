#include "bank/emv_walk.h"

#include <array>

#include "bank/afl.h"
#include "bank/emv_commands.h"
#include "bank/pdol_answer.h"
#include "bank/tlv.h"

namespace qz::bank {
namespace {

constexpr std::array<std::uint8_t, 1> tag_directory_sfi{0x88};
constexpr std::array<std::uint8_t, 1> tag_application_id{0x4F};
constexpr std::array<std::uint8_t, 2> tag_pdol{0x9F, 0x38};

// Looks for `tag` in `data`; when found, its value is in `value`.
bool find(std::span<const std::uint8_t> data, std::span<const std::uint8_t> tag, WorkArea& value) {
    std::uint16_t length = 0;
    const bool found = TlvFind(data, tag, value.bytes, length) == TlvResult::found;
    value.length = found ? length : 0;
    return found;
}

// Selects the directory and reads the record it names, if any; the directory
// entries are then in `response`. 0, or the walk's result.
int read_directory(CardPath& path, WorkArea& response, WorkArea& value) {
    if (!succeeded(select_directory(path, response))) return walk_failed;
    const bool has_sfi = find(response.data().first(response.length - 2), tag_directory_sfi, value);
    if (has_sfi && value.length > 0) {
        const std::uint8_t sfi = value.bytes[value.length - 1];
        return succeeded(read_record(path, 1, static_cast<std::uint8_t>(sfi * 8 + 4), 0, response)) ? 0
                                                                                                     : walk_failed;
    }
    if (!path.traits().directory_record_required) return 0;  // the entries may stand in the SELECT reply
    if (has_sfi) path.close();
    return walk_missing_data;
}

// Reads the records of each AFL entry in turn, until `reader` has what it needs.
// A record that the card refuses ends its entry only.
bool read_records(CardPath& path, std::span<const std::uint8_t> entries, WorkArea& response, WalkReader& reader) {
    for (std::size_t at = 0; at + afl_entry_size <= entries.size(); at += afl_entry_size) {
        const auto p2 = static_cast<std::uint8_t>((entries[at] & 0xF8) + 4);
        const int first = entries[at + 1];
        const int last = entries[at + 2];
        for (int record = first; record <= last; ++record) {
            if (!succeeded(read_record(path, static_cast<std::uint8_t>(record), p2, 0, response))) break;
            if (reader.take_record(response.data())) return true;
        }
    }
    return false;
}

// The steps behind the activation.
int walk_open_card(CardPath& path, WalkReader& reader) {
    WorkArea response;
    WorkArea value;
    WorkArea send;

    if (const int result = read_directory(path, response, value); result != 0) return result;
    if (!find(response.data(), tag_application_id, value)) return walk_missing_data;
    if (!succeeded(select_by_name(path, value.data(), response))) return walk_failed;
    if (!find(response.data(), tag_pdol, value)) return walk_missing_data;

    const auto answer_length = BuildPdolAnswer(value.data(), send.bytes);
    if (!answer_length) return walk_failed;
    send.length = *answer_length;
    response = WorkArea{};
    if (!succeeded(get_processing_options(path, send.data(), response))) return walk_failed;
    if (path.traits().reads_processing_options && reader.take_processing_options(response.data())) return 0;

    value.length = ExtractAfl(response.data(), value.bytes);
    if (read_records(path, value.data(), response, reader)) return 0;
    path.close();
    return walk_missing_data;
}

}  // namespace

int walk_card(CardPath& path, WalkReader& reader) {
    if (const int result = path.open(); result != 0) return result;
    try {
        return walk_open_card(path, reader);
    } catch (...) {
        path.close();
        return walk_missing_data;
    }
}

}  // namespace qz::bank
