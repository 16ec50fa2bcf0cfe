#include "sim/core/scenario.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <string_view>

#include "sim/core/json_values.h"

namespace qz::sim {
namespace {

using nlohmann::json;

template <class Unsigned>
Unsigned number_of(const json& value, const std::string& where) {
    return static_cast<Unsigned>(json_number(value, std::numeric_limits<Unsigned>::max(), where));
}

std::vector<std::uint8_t> parse_eeprom(const json& value) {
    const std::string where = "control.eeprom";
    json_object(value, {"size", "fill", "contents"}, where);
    const std::size_t size = json_number(value.value("size", json(max_eeprom_size)), max_eeprom_size, where + ".size");
    if (size < min_eeprom_size || size % 2 != 0) throw ScenarioError(where + ".size: an even number from 256 to 512");
    const auto fill = number_of<std::uint8_t>(value.value("fill", json(0xFF)), where + ".fill");
    std::vector<std::uint8_t> eeprom(size, fill);
    if (value.contains("contents")) {
        const auto contents = json_bytes(value["contents"], where + ".contents");
        if (contents.size() > size) throw ScenarioError(where + ".contents: longer than the EEPROM");
        std::copy(contents.begin(), contents.end(), eeprom.begin());
    }
    return eeprom;
}

// Bytes that the terminal sends as reply data, so they must fit in one frame.
std::vector<std::uint8_t> reply_bytes(const json& value, const std::string& where) {
    auto bytes = json_bytes(value, where);
    if (bytes.size() > max_frame_length - frame_overhead - 3) throw ScenarioError(where + ": longer than a reply holds");
    return bytes;
}

void parse_control(const json& value, Scenario& scenario) {
    json_object(value, {"version", "serial_number", "registration_number", "card_state", "eeprom"}, "control");
    ControlConfig& control = scenario.control;
    if (value.contains("version")) control.version = reply_bytes(value["version"], "control.version");
    if (value.contains("serial_number")) {
        const auto serial = json_bytes(value["serial_number"], "control.serial_number");
        if (serial.size() > serial_number_length)
            throw ScenarioError("control.serial_number: longer than 20 bytes");
        std::copy(serial.begin(), serial.end(), control.serial_number.begin());
    }
    if (value.contains("registration_number"))
        control.registration_number = reply_bytes(value["registration_number"], "control.registration_number");
    if (value.contains("card_state"))
        scenario.shared.card_state = number_of<std::uint8_t>(value["card_state"], "control.card_state");
    if (value.contains("eeprom")) control.eeprom = parse_eeprom(value["eeprom"]);
}

void parse_hid(const json& value, HidConfig& hid) {
    json_object(value, {"report_length"}, "hid");
    if (!value.contains("report_length")) return;
    hid.report_length = number_of<std::uint16_t>(value["report_length"], "hid.report_length");
    if (hid.report_length < min_report_length || hid.report_length > max_report_length)
        throw ScenarioError("hid.report_length: from 255 to 300");
}

struct FaultKindName {
    std::string_view name;
    FaultKind kind;
    std::string_view setting;  // the one further key the kind takes, if any
};

constexpr std::array<FaultKindName, 7> fault_kinds{{
    {"silence", FaultKind::silence, ""},
    {"bad_bcc", FaultKind::bad_bcc, ""},
    {"wrong_etx", FaultKind::wrong_etx, ""},
    {"cut", FaultKind::cut, "keep"},
    {"oversized", FaultKind::oversized, "len"},
    {"garbage", FaultKind::garbage, "bytes"},
    {"status", FaultKind::status, "status"},
}};

FaultRule parse_fault(const json& value, const std::string& where) {
    json_object(value, {"class", "instruction", "kind", "times", "status", "keep", "len", "bytes"}, where);
    for (const char* required : {"class", "instruction", "kind"})
        if (!value.contains(required)) throw ScenarioError(where + ": \"" + required + "\" missing");

    FaultRule rule;
    rule.class_byte = number_of<std::uint8_t>(value["class"], where + ".class");
    rule.instruction = number_of<std::uint8_t>(value["instruction"], where + ".instruction");
    const auto kind_name = value["kind"].is_string() ? value["kind"].get<std::string>() : std::string();
    const auto kind = std::find_if(fault_kinds.begin(), fault_kinds.end(),
                                   [&](const FaultKindName& entry) { return entry.name == kind_name; });
    if (kind == fault_kinds.end()) throw ScenarioError(where + ".kind: unknown fault \"" + kind_name + "\"");
    rule.fault.kind = kind->kind;
    for (const char* setting : {"status", "keep", "len", "bytes"})
        if (value.contains(setting) && kind->setting != setting)
            throw ScenarioError(where + ": \"" + setting + "\" does not go with " + kind_name);

    if (value.contains("times") && value["times"] != "always")
        rule.times = number_of<unsigned>(value["times"], where + ".times");
    if (rule.fault.kind == FaultKind::status) {
        if (!value.contains("status")) throw ScenarioError(where + ": a status fault needs \"status\"");
        rule.fault.status = number_of<std::uint16_t>(value["status"], where + ".status");
    }
    if (value.contains("keep")) rule.fault.keep = json_number(value["keep"], max_frame_length, where + ".keep");
    if (value.contains("len")) rule.fault.announced_length = number_of<std::uint16_t>(value["len"], where + ".len");
    if (value.contains("bytes")) rule.fault.garbage = json_bytes(value["bytes"], where + ".bytes");
    return rule;
}

}  // namespace

Scenario parse_scenario(const json& document) {
    if (!document.is_object()) throw ScenarioError("scenario: expected an object");
    Scenario scenario;
    scenario.document = document;
    parse_control(document.value("control", json::object()), scenario);
    parse_hid(document.value("hid", json::object()), scenario.hid);
    const json& faults = document.value("faults", json::array());
    if (!faults.is_array()) throw ScenarioError("faults: expected a list");
    for (std::size_t i = 0; i < faults.size(); ++i)
        scenario.faults.push_back(parse_fault(faults[i], "faults[" + std::to_string(i) + "]"));
    return scenario;
}

Scenario load_scenario(const std::filesystem::path& file) {
    std::ifstream in(file);
    if (!in) throw ScenarioError(file.string() + ": cannot be read");
    try {
        return parse_scenario(json::parse(in));
    } catch (const json::parse_error& error) {
        throw ScenarioError(file.string() + ": " + error.what());
    }
}

}  // namespace qz::sim
