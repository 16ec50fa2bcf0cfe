// What a person types on a simulated keypad or PIN pad: from the scenario, a queue
// of entries, each the digits of one PIN, which the device takes in order; or,
// while the terminal's Person is typing, the keys they press, the reply held
// until they end the entry or its time is up.
//
//   "entries": ["123456", "4321"]
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "sim/core/person.h"
#include "sim/core/terminal.h"

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

    // Keys come from `person` while they are typing, on the `device` named in
    // what they are asked for ("PIN on the keypad").
    void attach(Person& person, std::string device) {
        person_ = &person;
        device_ = std::move(device);
    }

    // The reply to an entry of at most `longest` digits: `finish` of the
    // digits, or entry_timed_out when none come within `wait`.
    Reply answer_entry(std::size_t longest, std::chrono::seconds wait,
                       std::function<Reply(const std::string&)> finish);
    // The same for a single key press.
    Reply answer_key(std::chrono::seconds wait, std::function<Reply(char)> finish);

private:
    bool person_types() const { return person_ != nullptr && person_->typing; }
    Reply held(std::string what, std::chrono::seconds wait, std::function<std::optional<Reply>()> ready);

    std::deque<std::string> entries_;
    Person* person_ = nullptr;
    std::string device_;
};

}  // namespace qz::sim
