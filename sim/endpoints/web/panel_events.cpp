#include "sim/endpoints/web/panel_events.h"

namespace qz::sim {

void PanelEvents::publish(std::string kind, nlohmann::json data) {
    {
        std::lock_guard guard(lock_);
        events_.push_back({++last_, std::move(kind), std::move(data)});
        if (events_.size() > kept_) events_.pop_front();
    }
    arrived_.notify_all();
}

std::vector<PanelEvent> PanelEvents::since(std::uint64_t after, std::chrono::milliseconds wait) {
    std::unique_lock guard(lock_);
    arrived_.wait_for(guard, wait, [&] { return closed_ || last_ > after; });
    std::vector<PanelEvent> found;
    for (const PanelEvent& event : events_)
        if (event.number > after) found.push_back(event);
    return found;
}

void PanelEvents::close() {
    {
        std::lock_guard guard(lock_);
        closed_ = true;
    }
    arrived_.notify_all();
}

bool PanelEvents::closed() const {
    std::lock_guard guard(lock_);
    return closed_;
}

}  // namespace qz::sim
