// The person at the terminal's keys: whether they, rather than the scenario's
// script, key PIN entries, and what they have typed that no device has taken yet.
//
// Keys: the digits, `enter_key` (ends an entry), `clear_key` (drops the digits
// typed) and `cancel_key` (gives up the entry).
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace qz::sim {

inline constexpr char enter_key = '\r';
inline constexpr char clear_key = '\b';
inline constexpr char cancel_key = '\x1b';

class Person {
public:
    bool typing = false;

    // Whether the key is one the terminal has.
    static bool is_key(char key);
    // Takes one key press; unknown keys are dropped.
    void press(char key);
    // Forgets what was typed before an entry begins.
    void forget();

    // An entry ended with Enter: its digits, at most `longest`.
    std::optional<std::string> take_entry(std::size_t longest);
    // The first key typed, digit or Enter.
    std::optional<char> take_key();
    bool cancelled() const { return cancelled_; }
    std::size_t digits_typed() const { return typed_.size() - (!typed_.empty() && typed_.back() == enter_key); }

private:
    std::string typed_;  // digits, and Enter at the end once pressed
    bool cancelled_ = false;
};

}  // namespace qz::sim
