#include "sim/endpoints/web/traffic_names.h"

#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "sim/core/status.h"
#include "sim/models/cards/card_reader_model.h"
#include "sim/models/memcards/memory_chip.h"
#include "sim/models/rfcards/field_card.h"

namespace qz::sim {
namespace {

using nlohmann::json;

constexpr unsigned most_tries = 15;

std::string hex(unsigned value, int digits) {
    char text[8];
    std::snprintf(text, sizeof text, "%0*X", digits, value);
    return text;
}

// One name for several: each different one once, in order, joined by " / ".
std::string joined(const std::vector<std::string>& names) {
    std::string text;
    std::set<std::string> seen;
    for (const std::string& name : names)
        if (seen.insert(name).second) text += (text.empty() ? "" : " / ") + name;
    return text;
}

json status_words() {
    const std::vector<std::pair<std::uint16_t, const char*>> words{
        {status::ok, "done"},
        {status::wrong_length, "wrong length"},
        {status::out_of_range, "out of range"},
        {status::entry_timed_out, "nothing came in time"},
        {status::wrong_data, "wrong data"},
        {status::key_missing, "key not loaded"},
        {status::out_of_sequence, "out of sequence or refused"},
        {status::instruction_unknown, "instruction unknown"},
        {status::class_unknown, "class unknown"},
        {status::damaged_request, "damaged request"},
        {status::no_card, "no card"},
        {status::card_inactive, "card not activated"},
        {status::wrong_card, "another kind of card"},
        {status::code_required, "code not presented"},
        {status::code_blocked, "code blocked"},
        {status::authentication_failed, "authentication failed"},
    };
    json statuses = json::object();
    for (const auto& [word, text] : words) statuses[hex(word, 4)] = text;
    for (unsigned left = 0; left <= most_tries; ++left)
        statuses[hex(status::code_wrong | left, 4)] = "wrong code, " + std::to_string(left) + " tries left";
    return statuses;
}

}  // namespace

json traffic_names(const Terminal& terminal) {
    std::map<std::string, std::vector<std::string>> classes;
    std::map<std::string, std::vector<std::string>> instructions;
    for (const Route& route : terminal.routes()) {
        if (route.device.empty()) continue;
        const std::string class_byte = hex(route.class_byte, 2);
        classes[class_byte].push_back(route.device);
        for (const auto& [instruction, name] : route.names)
            instructions[class_byte + " " + hex(instruction, 2)].push_back(route.device + ": " + name);
    }
    json names{{"classes", json::object()}, {"instructions", json::object()}, {"statuses", status_words()}};
    for (const auto& [key, devices] : classes) names["classes"][key] = joined(devices);
    for (const auto& [key, named] : instructions) names["instructions"][key] = joined(named);
    return names;
}

}  // namespace qz::sim
