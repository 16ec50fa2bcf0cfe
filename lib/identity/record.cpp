#include "identity/record.h"

#include <algorithm>

#include "identity/field_decoding.h"
#include "reader/hex.h"

namespace qz::identity {
namespace {

// The fields of the text block by name, for both kinds of card, in the order
// of the result text: where each lies and which field kind of its card's
// decoder (IDFieldToText, IDForeignFieldToText) decodes it.
enum class Field {
    name, gender, ethnic_group, birth_date, address, id_number, authority, valid_from, valid_until,
    card_number, country, chinese_name, version, authority_code, card_type, reserved,
};

struct FieldSlot {
    RecordKind card;
    Field field;
    std::size_t offset;
    std::size_t bytes;
    int kind;
};

constexpr FieldSlot record_layout[]{
    {RecordKind::ordinary, Field::name, 0, 30, 0},
    {RecordKind::ordinary, Field::gender, 30, 2, 1},
    {RecordKind::ordinary, Field::ethnic_group, 32, 4, 2},
    {RecordKind::ordinary, Field::birth_date, 36, 16, 3},
    {RecordKind::ordinary, Field::address, 52, 70, 4},
    {RecordKind::ordinary, Field::id_number, 122, 36, 5},
    {RecordKind::ordinary, Field::authority, 158, 30, 6},
    {RecordKind::ordinary, Field::valid_from, 188, 16, 7},
    {RecordKind::ordinary, Field::valid_until, 204, 16, 8},
    {RecordKind::ordinary, Field::reserved, 220, 36, 9},
    {RecordKind::foreign, Field::name, 0, 120, 1},
    {RecordKind::foreign, Field::gender, 120, 2, 2},
    {RecordKind::foreign, Field::card_number, 122, 30, 3},
    {RecordKind::foreign, Field::country, 152, 6, 4},
    {RecordKind::foreign, Field::chinese_name, 158, 30, 5},
    {RecordKind::foreign, Field::valid_from, 188, 16, 6},
    {RecordKind::foreign, Field::valid_until, 204, 16, 7},
    {RecordKind::foreign, Field::birth_date, 220, 16, 8},
    {RecordKind::foreign, Field::version, 236, 4, 9},
    {RecordKind::foreign, Field::authority_code, 240, 8, 10},
    {RecordKind::foreign, Field::card_type, 248, 2, 11},
    {RecordKind::foreign, Field::reserved, 250, 6, 12},
};

consteval FieldSlot slot_of(RecordKind card, Field field) {
    for (const FieldSlot& slot : record_layout)
        if (slot.card == card && slot.field == field) return slot;
    throw "the layout lacks this field";
}

constexpr FieldSlot card_type_field = slot_of(RecordKind::foreign, Field::card_type);

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
    std::string text = std::to_string(static_cast<int>(kind)) + "|";
    for (const FieldSlot& slot : record_layout) {
        if (slot.card != kind) continue;
        const std::string field = decode_field(slot, text_block, kind);
        text += slot.field == Field::country ? country_text(field) : field;
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
