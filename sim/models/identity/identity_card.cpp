#include "sim/models/identity/identity_card.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <span>
#include <stdexcept>

#include "sim/core/json_values.h"
#include "sim/models/identity/ucs2_text.h"

namespace qz::sim {
namespace {

using nlohmann::json;

constexpr std::array<std::string_view, 3> card_keys{"kind", "photo", "finger"};

std::span<const FieldPlace> fields_of(RecordKind kind) {
    if (kind == RecordKind::foreign) return foreign_fields;
    return ordinary_fields;
}

RecordKind parse_kind(const json& value, const std::string& where) {
    if (value == "ordinary") return RecordKind::ordinary;
    if (value == "foreign") return RecordKind::foreign;
    throw ScenarioError(where + ": expected \"ordinary\" or \"foreign\"");
}

void check_keys(const json& value, RecordKind kind, const std::string& where) {
    const auto fields = fields_of(kind);
    for (const auto& item : value.items()) {
        const std::string& key = item.key();  // a named variable: lambdas cannot capture bindings in clang 14
        const bool field =
            std::any_of(fields.begin(), fields.end(), [&](const FieldPlace& place) { return place.key == key; });
        if (!field && std::find(card_keys.begin(), card_keys.end(), key) == card_keys.end())
            throw ScenarioError(where + ": unknown key \"" + key + "\"");
    }
}

// Puts `units` into the field at `place`, little-endian, blanks behind them.
void put_field(std::span<std::uint8_t> text, const FieldPlace& place, std::u16string_view units,
               const std::string& where) {
    if (units.size() * 2 > place.bytes)
        throw ScenarioError(where + ": " + std::to_string(units.size()) + " characters, the field holds " +
                            std::to_string(place.bytes / 2));
    for (std::size_t i = 0; i < place.bytes / 2; ++i) {
        const char16_t unit = i < units.size() ? units[i] : u' ';
        text[place.offset + 2 * i] = static_cast<std::uint8_t>(unit);
        text[place.offset + 2 * i + 1] = static_cast<std::uint8_t>(unit >> 8);
    }
}

std::u16string field_text(const json& value, const std::string& where) {
    if (!value.is_string()) throw ScenarioError(where + ": expected a text");
    try {
        return ucs2_from_utf8(value.get_ref<const std::string&>());
    } catch (const std::invalid_argument& error) {
        throw ScenarioError(where + ": " + error.what());
    }
}

std::vector<std::uint8_t> read_file(const std::filesystem::path& file, const std::string& where) {
    std::error_code ignored;
    std::ifstream in(file, std::ios::binary);
    if (!std::filesystem::is_regular_file(file, ignored) || !in)
        throw ScenarioError(where + ": " + file.string() + " cannot be read");
    return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<std::uint8_t> parse_photo(const json& value, const std::string& where,
                                      const std::filesystem::path& photo_folder) {
    if (!value.is_object() || !value.contains("file")) return json_bytes(value, where);
    json_object(value, {"file"}, where);
    if (!value["file"].is_string()) throw ScenarioError(where + ".file: expected a file name");
    return read_file(photo_folder / value["file"].get<std::string>(), where + ".file");
}

}  // namespace

IdentityCard parse_identity_card(const json& value, const std::string& where,
                                 const std::filesystem::path& photo_folder) {
    if (!value.is_object()) throw ScenarioError(where + ": expected an object");
    IdentityCard card;
    if (value.contains("kind")) card.kind = parse_kind(value["kind"], where + ".kind");
    check_keys(value, card.kind, where);

    for (const FieldPlace& place : fields_of(card.kind)) {
        const std::string field_where = where + "." + std::string(place.key);
        put_field(card.text, place, value.contains(place.key) ? field_text(value[place.key], field_where) : u"",
                  field_where);
    }
    // Ordinary cards have no card type of their own: the reserved field covers it.
    if (card.kind == RecordKind::foreign) put_field(card.text, card_type_field, {&foreign_card_type, 1}, where);

    if (value.contains("photo")) card.photo = parse_photo(value["photo"], where + ".photo", photo_folder);
    if (value.contains("finger")) card.finger = json_bytes(value["finger"], where + ".finger");
    return card;
}

}  // namespace qz::sim
