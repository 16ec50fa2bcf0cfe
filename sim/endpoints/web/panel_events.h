// What the web panel tells its pages as it happens: events with a running
// number, kept in a short history so that a page that reconnects misses none.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace qz::sim {

struct PanelEvent {
    std::uint64_t number = 0;
    std::string kind;  // "screen", "lcd", "beep", "traffic", "prompt", "state"
    nlohmann::json data;
};

class PanelEvents {
public:
    explicit PanelEvents(std::size_t kept = 2000) : kept_(kept) {}

    void publish(std::string kind, nlohmann::json data);
    // The events after `after` (oldest first), waiting up to `wait` for one.
    std::vector<PanelEvent> since(std::uint64_t after, std::chrono::milliseconds wait);
    // Wakes every waiting reader, for good: the panel is closing.
    void close();
    bool closed() const;

private:
    mutable std::mutex lock_;
    std::condition_variable arrived_;
    std::deque<PanelEvent> events_;
    std::size_t kept_;
    std::uint64_t last_ = 0;
    bool closed_ = false;
};

}  // namespace qz::sim
