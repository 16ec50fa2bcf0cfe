#include "sim/models/cards/card_config.h"

#include <array>
#include <fstream>
#include <set>
#include <string_view>
#include <utility>

#include "sim/models/cards/atr.h"
#include "sim/models/cards/ber_tlv.h"
#include "sim/core/json_values.h"

namespace qz::sim {
namespace {

using nlohmann::json;
using Bytes = std::vector<std::uint8_t>;

// A contact card speaking T=0 that says who it is in its historical bytes.
const Bytes default_atr{0x3B, 0x68, 0x00, 0x00, 'Q', 'Z', '3', '2', 'C', 'A', 'R', 'D'};
const Bytes default_uid{0x04, 0x51, 0x5A, 0x32};
// TL, T0 (TA, TB, TC follow; FSC 256), TA, TB, TC, then the historical bytes.
const Bytes default_ats{0x0D, 0x78, 0x80, 0x70, 0x02, 'Q', 'Z', '3', '2', 'C', 'A', 'R', 'D'};

constexpr std::string_view contact_directory = "1PAY.SYS.DDF01";
constexpr std::string_view contactless_directory = "2PAY.SYS.DDF01";
constexpr std::uint8_t default_directory_sfi = 1;
constexpr std::uint64_t max_sfi = 30;
constexpr std::size_t aip_length = 2;
constexpr std::size_t afl_entry_length = 4;
constexpr std::size_t min_aid_length = 5;
constexpr std::size_t max_aid_length = 16;

template <class Unsigned>
Unsigned number(const json& value, std::uint64_t min, std::uint64_t max, const std::string& where) {
    const auto found = json_number(value, max, where);
    if (found < min) throw ScenarioError(where + ": below " + std::to_string(min));
    return static_cast<Unsigned>(found);
}

Bytes bytes_or(const json& object, const char* key, Bytes fallback, const std::string& where) {
    return object.contains(key) ? json_bytes(object[key], where + "." + key) : std::move(fallback);
}

Bytes tlvs_or_none(const json& object, const char* key, const std::string& where) {
    return object.contains(key) ? tlv_list(object[key], where + "." + key) : Bytes{};
}

EmvRecord parse_record(const json& value, const std::string& where) {
    json_object(value, {"sfi", "record", "data", "raw", "refuse"}, where);
    for (const char* required : {"sfi", "record"})
        if (!value.contains(required)) throw ScenarioError(where + ": \"" + required + "\" missing");
    const int contents = static_cast<int>(value.contains("data")) + static_cast<int>(value.contains("raw")) +
                         static_cast<int>(value.contains("refuse"));
    if (contents != 1) throw ScenarioError(where + ": give exactly one of \"data\", \"raw\" and \"refuse\"");

    EmvRecord record;
    record.sfi = number<std::uint8_t>(value["sfi"], 1, max_sfi, where + ".sfi");
    record.number = number<std::uint8_t>(value["record"], 1, 0xFF, where + ".record");
    if (value.contains("data"))
        record.content = tlv(std::array<std::uint8_t, 1>{0x70}, tlv_list(value["data"], where + ".data"));
    if (value.contains("raw")) record.content = json_bytes(value["raw"], where + ".raw");
    if (value.contains("refuse"))
        record.refusal = number<std::uint16_t>(value["refuse"], 0x6000, 0x6FFF, where + ".refuse");
    if (record.content.size() > max_short_response) throw ScenarioError(where + ": longer than 256 bytes");
    return record;
}

std::vector<EmvRecord> parse_records(const json& list, const std::string& where) {
    if (!list.is_array()) throw ScenarioError(where + ": expected a list");
    std::vector<EmvRecord> records;
    std::set<std::pair<std::uint8_t, std::uint8_t>> seen;
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string item = where + "[" + std::to_string(i) + "]";
        records.push_back(parse_record(list[i], item));
        if (!seen.insert({records.back().sfi, records.back().number}).second)
            throw ScenarioError(item + ": this SFI and record number are there twice");
    }
    return records;
}

void parse_processing_options(const json& value, EmvApplication& application, const std::string& where) {
    json_object(value, {"format", "aip", "afl", "data"}, where);
    const auto format = number<unsigned>(value.value("format", json(1u)), 1, 2, where + ".format");
    application.gpo_format = format == 1 ? GpoFormat::format_1 : GpoFormat::format_2;
    application.aip = bytes_or(value, "aip", application.aip, where);
    if (application.aip.size() != aip_length) throw ScenarioError(where + ".aip: two bytes");
    application.afl = bytes_or(value, "afl", {}, where);
    if (application.afl.size() % afl_entry_length != 0) throw ScenarioError(where + ".afl: four bytes an entry");
    if (value.contains("data") && application.gpo_format == GpoFormat::format_1)
        throw ScenarioError(where + ".data: format 1 holds only AIP and AFL");
    application.gpo_extra = tlvs_or_none(value, "data", where);
}

EmvApplication parse_application(const json& value, const std::string& where) {
    json_object(value, {"aid", "label", "priority", "pdol", "fci", "gpo", "records"}, where);
    if (!value.contains("aid")) throw ScenarioError(where + ": \"aid\" missing");
    EmvApplication application;
    application.aid = json_bytes(value["aid"], where + ".aid");
    if (application.aid.size() < min_aid_length || application.aid.size() > max_aid_length)
        throw ScenarioError(where + ".aid: 5 to 16 bytes");
    application.label = bytes_or(value, "label", {}, where);
    if (value.contains("priority"))
        application.priority = number<std::uint8_t>(value["priority"], 0, 0xFF, where + ".priority");
    if (value.contains("pdol")) {
        application.pdol = json_bytes(value["pdol"], where + ".pdol");
        if (!dol_length(*application.pdol)) throw ScenarioError(where + ".pdol: a tag without its length");
    }
    application.fci_extra = tlvs_or_none(value, "fci", where);
    if (value.contains("gpo")) parse_processing_options(value["gpo"], application, where + ".gpo");
    if (value.contains("records")) application.records = parse_records(value["records"], where + ".records");
    return application;
}

std::optional<EmvDirectory> parse_directory(const json& card, CardLocation location, const std::string& where) {
    const bool contact = location == CardLocation::slot;
    const std::string_view default_name = contact ? contact_directory : contactless_directory;
    EmvDirectory directory{
        {default_name.begin(), default_name.end()}, contact ? std::optional(default_directory_sfi) : std::nullopt, {}};
    if (!card.contains("directory")) return directory;
    const json& value = card["directory"];
    if (value.is_null()) return std::nullopt;
    json_object(value, {"name", "sfi", "fci"}, where);
    directory.name = bytes_or(value, "name", directory.name, where);
    if (value.contains("sfi"))
        directory.sfi = value["sfi"].is_null()
                            ? std::nullopt
                            : std::optional(number<std::uint8_t>(value["sfi"], 1, max_sfi, where + ".sfi"));
    directory.fci_extra = tlvs_or_none(value, "fci", where);
    return directory;
}

ResponseRules parse_rules(const json& card, CardLocation location, const CardFace& face, const std::string& where) {
    if (location == CardLocation::slot) {
        if (card.contains("responses"))
            throw ScenarioError(where + ".responses: a contact card answers by the protocol of its ATR");
        const auto protocol = atr_protocol(face.atr);
        if (!protocol) throw ScenarioError(where + ".atr: not a well-formed answer to reset");
        return *protocol == 0 ? ResponseRules::t0 : ResponseRules::direct;
    }
    const std::string rules = card.value("responses", std::string("direct"));
    if (rules == "direct") return ResponseRules::direct;
    if (rules == "t0") return ResponseRules::t0;
    throw ScenarioError(where + ".responses: \"direct\" or \"t0\"");
}

}  // namespace

json load_card_file(const std::filesystem::path& file, const std::string& where) {
    std::ifstream in(file);
    if (!in) throw ScenarioError(where + ".file: " + file.string() + " cannot be read");
    try {
        return json::parse(in);
    } catch (const json::parse_error& error) {
        throw ScenarioError(where + ".file: " + file.string() + ": " + error.what());
    }
}

CardConfig parse_card(const json& value, CardLocation location, const std::string& where,
                      const std::filesystem::path& folder) {
    if (value.is_object() && value.contains("file")) {
        json_object(value, {"file"}, where);
        if (!value["file"].is_string()) throw ScenarioError(where + ".file: expected a path");
        const std::filesystem::path file = folder / value["file"].get<std::string>();
        return parse_card(load_card_file(file, where), location, file.string(), folder);
    }
    json_object(value,
                {"description", "atr", "uid", "ats", "sak", "responses", "response_chunk", "directory", "applications"},
                where);
    CardConfig card;
    card.face.atr = bytes_or(value, "atr", default_atr, where);
    card.face.uid = bytes_or(value, "uid", default_uid, where);
    card.face.ats = bytes_or(value, "ats", default_ats, where);
    if (card.face.uid.empty() || card.face.uid.size() > 10) throw ScenarioError(where + ".uid: 1 to 10 bytes");
    if (card.face.ats.size() > 0xFF) throw ScenarioError(where + ".ats: at most 255 bytes");
    if (value.contains("sak")) card.face.sak = number<std::uint8_t>(value["sak"], 0, 0xFF, where + ".sak");
    card.rules = parse_rules(value, location, card.face, where);
    if (value.contains("response_chunk"))
        card.response_chunk =
            number<std::size_t>(value["response_chunk"], 1, max_short_response, where + ".response_chunk");

    card.emv.directory = parse_directory(value, location, where + ".directory");
    const json& applications = value.value("applications", json::array());
    if (!applications.is_array()) throw ScenarioError(where + ".applications: expected a list");
    for (std::size_t i = 0; i < applications.size(); ++i)
        card.emv.applications.push_back(
            parse_application(applications[i], where + ".applications[" + std::to_string(i) + "]"));
    return card;
}

std::optional<CardsConfig> parse_cards(const json& document, const std::filesystem::path& folder) {
    if (!document.contains("cards")) return std::nullopt;
    const json& section = json_object(document["cards"], {"field", "slots"}, "cards");
    CardsConfig cards;
    if (section.contains("field") && !section["field"].is_null())
        cards.field = parse_card(section["field"], CardLocation::field, "cards.field", folder);
    const json& slots = section.value("slots", json::array());
    if (!slots.is_array() || slots.size() > contact_slot_count)
        throw ScenarioError("cards.slots: a list of up to five cards");
    for (std::size_t i = 0; i < slots.size(); ++i)
        if (!slots[i].is_null())
            cards.slots[i] = parse_card(slots[i], CardLocation::slot, "cards.slots[" + std::to_string(i) + "]", folder);
    return cards;
}

std::unique_ptr<Iso7816Card> make_card(const CardConfig& config) {
    return std::make_unique<Iso7816Card>(config.face, config.rules, config.response_chunk,
                                         std::make_unique<EmvCard>(config.emv));
}

}  // namespace qz::sim
