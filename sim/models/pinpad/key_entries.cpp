#include "sim/models/pinpad/key_entries.h"

#include <algorithm>

#include "sim/core/json_values.h"

namespace qz::sim {

KeyEntries::KeyEntries(const nlohmann::json& list, const std::string& where) {
    if (!list.is_array()) throw ScenarioError(where + ": expected a list of texts of digits");
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string place = where + "[" + std::to_string(i) + "]";
        if (!list[i].is_string()) throw ScenarioError(place + ": expected a text of digits");
        const auto& digits = list[i].get_ref<const std::string&>();
        if (digits.empty() || !std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; }))
            throw ScenarioError(place + ": expected one or more digits, not \"" + digits + "\"");
        entries_.push_back(digits);
    }
}

std::optional<std::string> KeyEntries::take_entry(std::size_t longest) {
    if (entries_.empty()) return std::nullopt;
    std::string digits = entries_.front().substr(0, longest);
    entries_.pop_front();
    return digits;
}

std::optional<char> KeyEntries::take_key() {
    if (entries_.empty()) return std::nullopt;
    std::string& front = entries_.front();
    const char key = front.front();
    front.erase(0, 1);
    if (front.empty()) entries_.pop_front();
    return key;
}

}  // namespace qz::sim
