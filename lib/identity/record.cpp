#include "identity/record.h"

#include <algorithm>

#include "identity/field_decoding.h"
#include "reader/hex.h"

namespace qz::identity {
namespace {

// Where a field lies in the text block and which field kind decodes it.
struct FieldSlot {
    std::size_t offset;
    std::size_t bytes;
    int kind;
};

constexpr std::array<FieldSlot, 10> ordinary_fields{{
    {0, 30, 0}, {30, 2, 1}, {32, 4, 2}, {36, 16, 3}, {52, 70, 4},
    {122, 36, 5}, {158, 30, 6}, {188, 16, 7}, {204, 16, 8}, {220, 36, 9},
}};

constexpr std::array<FieldSlot, 12> foreign_fields{{
    {0, 120, 1}, {120, 2, 2}, {122, 30, 3}, {152, 6, 4}, {158, 30, 5}, {188, 16, 6},
    {204, 16, 7}, {220, 16, 8}, {236, 4, 9}, {240, 8, 10}, {248, 2, 11}, {250, 6, 12},
}};

constexpr FieldSlot card_type_field = foreign_fields[10];
constexpr int country_code_kind = 4;

std::uint8_t byte_at(std::span<const std::uint8_t> reply, std::size_t offset) {
    return offset < reply.size() ? reply[offset] : 0;
}

std::size_t be16_at(std::span<const std::uint8_t> reply, std::size_t offset) {
    return std::size_t{byte_at(reply, offset)} << 8 | byte_at(reply, offset + 1);
}

// The part of the reply from `offset` on, at most `length` bytes.
std::span<const std::uint8_t> part_of(std::span<const std::uint8_t> reply, std::size_t offset, std::size_t length) {
    if (offset >= reply.size()) return {};
    return reply.subspan(offset, std::min(length, reply.size() - offset));
}

std::string decode_field(const FieldSlot& slot, std::span<const std::uint8_t, text_block_size> block,
                         RecordKind kind) {
    std::array<std::uint8_t, 256> info{};
    std::copy_n(block.begin() + static_cast<std::ptrdiff_t>(slot.offset), slot.bytes, info.begin());
    return kind == RecordKind::foreign ? IDForeignFieldToText(slot.kind, info) : IDFieldToText(slot.kind, info);
}

// Country name, "/" and the code; the code alone for a code the table lacks.
std::string country_text(const std::string& code) {
    std::string country;
    CountryCodeToName(code, country);
    return country.empty() ? code : country + "/" + code;
}

}  // namespace

ReplyParts split_reply(int mode, std::span<const std::uint8_t> reply) {
    ReplyParts parts;
    for (std::size_t i = 0; i < parts.module_status.size(); ++i) parts.module_status[i] = byte_at(reply, 2 + i);
    const std::size_t text_length = be16_at(reply, 5);
    const std::size_t photo_length = be16_at(reply, 7);
    const std::size_t finger_length = mode == 1 ? be16_at(reply, 9) : 0;
    const std::size_t text_start = mode == 1 ? 11 : 9;

    const auto text = part_of(reply, text_start, text_block_size);
    std::copy(text.begin(), text.end(), parts.text_block.begin());
    const std::size_t photo_start = text_start + text_length;
    parts.photo = part_of(reply, photo_start, photo_length);
    parts.finger = part_of(reply, photo_start + photo_length, std::min(finger_length, max_finger_bytes));
    return parts;
}

RecordKind record_kind(std::span<const std::uint8_t, text_block_size> text_block) {
    return decode_field(card_type_field, text_block, RecordKind::foreign) == "I" ? RecordKind::foreign
                                                                                 : RecordKind::ordinary;
}

std::string card_text(std::span<const std::uint8_t, text_block_size> text_block) {
    const RecordKind kind = record_kind(text_block);
    const std::span<const FieldSlot> fields =
        kind == RecordKind::foreign ? std::span<const FieldSlot>(foreign_fields) : ordinary_fields;
    std::string text = std::to_string(static_cast<int>(kind)) + "|";
    for (const FieldSlot& slot : fields) {
        const std::string field = decode_field(slot, text_block, kind);
        text += kind == RecordKind::foreign && slot.kind == country_code_kind ? country_text(field) : field;
        text += '|';
    }
    return text;
}

std::string finger_text(std::span<const std::uint8_t> finger) {
    std::string text(finger.size() * 2, '\0');
    reader::to_hex(finger, text);
    return text;
}

}  // namespace qz::identity
