// What a person types on a simulated keypad or PIN pad, from the scenario: a queue
// of entries, each the digits of one PIN, which the device takes in order.
//
//   "entries": ["123456", "4321"]
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace qz::sim {

class KeyEntries {
public:
    KeyEntries() = default;
    // A list of texts of digits; throws ScenarioError naming `where` for anything else.
    KeyEntries(const nlohmann::json& list, const std::string& where);

    // The digits of the next entry, at most `longest` (the device takes no more);
    // nothing when no entry is left, as when no one types before the time-out.
    std::optional<std::string> take_entry(std::size_t longest);
    // The next single key press, from the front of the next entry.
    std::optional<char> take_key();

    std::size_t pending() const { return entries_.size(); }

private:
    std::deque<std::string> entries_;
};

}  // namespace qz::sim
