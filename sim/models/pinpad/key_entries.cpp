#include "sim/models/pinpad/key_entries.h"

#include <algorithm>

#include "sim/core/held_reply.h"
#include "sim/core/json_values.h"
#include "sim/core/status.h"

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

Reply KeyEntries::answer_entry(std::size_t longest, std::chrono::seconds wait,
                               std::function<Reply(const std::string&)> finish) {
    if (!person_types()) {
        const auto digits = take_entry(longest);
        return digits ? finish(*digits) : Reply::failure(status::entry_timed_out);
    }
    person_->forget();  // keys pressed before the prompt count for nothing
    return held("PIN on the " + device_, wait, [person = person_, longest, finish = std::move(finish)]() -> std::optional<Reply> {
        if (person->cancelled()) return Reply::failure(status::entry_timed_out);
        const auto digits = person->take_entry(longest);
        return digits ? std::optional(finish(*digits)) : std::nullopt;
    });
}

Reply KeyEntries::answer_key(std::chrono::seconds wait, std::function<Reply(char)> finish) {
    if (!person_types()) {
        const auto key = take_key();
        return key ? finish(*key) : Reply::failure(status::entry_timed_out);
    }
    return held("key on the " + device_, wait, [person = person_, finish = std::move(finish)]() -> std::optional<Reply> {
        if (person->cancelled()) return Reply::failure(status::entry_timed_out);
        const auto key = person->take_key();
        return key ? std::optional(finish(*key)) : std::nullopt;
    });
}

Reply KeyEntries::held(std::string what, std::chrono::seconds wait, std::function<std::optional<Reply>()> ready) {
    return Reply::hold({std::move(what), HoldClock::now() + wait, std::move(ready),
                        Reply::failure(status::entry_timed_out)});
}

}  // namespace qz::sim
