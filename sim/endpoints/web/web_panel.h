// The simulated terminal in a browser: an HTTP server with one page (embedded
// in the program), a JSON API under /api/ for everything the page can do, the
// screen as PNG, and Server-Sent Events at /api/events for what changes.
#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <nlohmann/json.hpp>

#include "sim/core/terminal.h"
#include "sim/endpoints/web/panel_actions.h"
#include "sim/endpoints/web/panel_events.h"

namespace httplib {
class Server;
}

namespace qz::sim {

inline constexpr std::size_t longest_request_body = 16 * 1024;

// Whether `address` is one of this machine's loopback addresses.
bool is_loopback(const std::string& address);

class WebPanel {
public:
    // Listens on `address`:`port` (0: any free port). `lock` guards the terminal
    // against the other servers. Throws std::runtime_error when it cannot listen.
    WebPanel(Terminal& terminal, std::mutex& lock, const nlohmann::json& document,
             const std::filesystem::path& card_folder, const std::string& address, int port);
    WebPanel(const WebPanel&) = delete;
    WebPanel& operator=(const WebPanel&) = delete;
    ~WebPanel();

    int port() const { return port_; }

private:
    void add_routes();
    void watch_terminal();
    void watch_prompt();

    Terminal& terminal_;
    std::mutex& lock_;
    PanelActions actions_;
    PanelEvents events_;
    std::unique_ptr<httplib::Server> server_;
    int port_ = 0;
    std::size_t beeps_seen_ = 0;
    std::atomic<bool> stopping_ = false;
    std::thread listener_;
    std::thread prompt_watch_;
};

}  // namespace qz::sim
