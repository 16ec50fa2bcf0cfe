// What a device model keeps for inspection (commands received, beeps, openings)
// holds only the most recent entries, so a simulator that runs for days stays at
// a constant size.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace qz::sim {

inline constexpr std::size_t recent_history_limit = 256;

// Appends `entry` and drops the oldest entries beyond recent_history_limit.
template <class T>
void keep_recent(std::vector<T>& history, T entry) {
    if (history.size() >= recent_history_limit)
        history.erase(history.begin(),
                      history.begin() + static_cast<std::ptrdiff_t>(history.size() - recent_history_limit + 1));
    history.push_back(std::move(entry));
}

}  // namespace qz::sim
