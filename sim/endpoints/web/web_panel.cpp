#include "sim/endpoints/web/web_panel.h"

#include <arpa/inet.h>

#include <httplib.h>

#include <chrono>
#include <cstdio>
#include <stdexcept>

#include "sim/endpoints/web/panel_files.h"
#include "sim/endpoints/web/traffic_names.h"
#include "sim/models/control/control_model.h"
#include "sim/models/lcd/lcd_model.h"
#include "sim/models/screen/png_file.h"
#include "sim/models/screen/screen_model.h"

namespace qz::sim {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

constexpr auto prompt_tick = 250ms;
constexpr auto event_wait = 1s;

std::string hex_of(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, text.empty() ? "%02X" : " %02X", byte);
        text += digits;
    }
    return text;
}

void send_json(httplib::Response& response, const json& body, int status = 200) {
    response.status = status;
    response.set_content(body.dump(), "application/json");
}

void send_png(httplib::Response& response, int width, int height, std::span<const std::uint8_t> rgb) {
    const auto png = encode_rgb_png(width, height, rgb);
    response.set_content(reinterpret_cast<const char*>(png.data()), png.size(), "image/png");
}

void send_png(httplib::Response& response, const FrameBuffer& picture) {
    send_png(response, screen_width, screen_height, picture.rgb());
}

std::string event_text(const PanelEvent& event) {
    return "id: " + std::to_string(event.number) + "\nevent: " + event.kind + "\ndata: " + event.data.dump() + "\n\n";
}

}  // namespace

bool is_loopback(const std::string& address) {
    if (address == "localhost") return true;
    in_addr v4{};
    if (inet_pton(AF_INET, address.c_str(), &v4) == 1) return (ntohl(v4.s_addr) >> 24) == 127;
    in6_addr v6{};
    return inet_pton(AF_INET6, address.c_str(), &v6) == 1 && IN6_IS_ADDR_LOOPBACK(&v6);
}

WebPanel::WebPanel(Terminal& terminal, std::mutex& lock, const json& document,
                   const std::filesystem::path& card_folder, const std::string& address, int port)
    : terminal_(terminal),
      lock_(lock),
      actions_(terminal, document, card_folder),
      server_(std::make_unique<httplib::Server>()) {
    server_->set_payload_max_length(longest_request_body);
    add_routes();
    watch_terminal();
    port_ = port == 0 ? server_->bind_to_any_port(address) : (server_->bind_to_port(address, port) ? port : -1);
    if (port_ <= 0) throw std::runtime_error("the web panel cannot listen on " + address + ":" + std::to_string(port));
    listener_ = std::thread([this] { server_->listen_after_bind(); });
    prompt_watch_ = std::thread([this] { watch_prompt(); });
}

WebPanel::~WebPanel() {
    stopping_ = true;
    events_.close();
    server_->stop();
    listener_.join();
    prompt_watch_.join();
}

void WebPanel::add_routes() {
    for (const PanelFile& file : panel_files)
        server_->Get(std::string(file.path), [&file](const httplib::Request&, httplib::Response& response) {
            response.set_content(file.text.data(), file.text.size(), std::string(file.content_type).c_str());
        });
    server_->Get("/api/state", [this](const httplib::Request&, httplib::Response& response) {
        std::lock_guard guard(lock_);
        send_json(response, actions_.state(HoldClock::now()));
    });
    server_->Get("/api/names", [this](const httplib::Request&, httplib::Response& response) {
        std::lock_guard guard(lock_);
        send_json(response, traffic_names(terminal_));
    });
    server_->Get("/api/screen.png", [this](const httplib::Request&, httplib::Response& response) {
        std::lock_guard guard(lock_);
        send_png(response, terminal_.model<ScreenModel>()->visible());
    });
    server_->Get("/api/lcd.png", [this](const httplib::Request&, httplib::Response& response) {
        std::lock_guard guard(lock_);
        send_png(response, lcd_width, lcd_height, terminal_.model<LcdModel>()->rgb());
    });
    server_->Get(R"(/api/pages/([0-4])\.png)", [this](const httplib::Request& request, httplib::Response& response) {
        std::lock_guard guard(lock_);
        send_png(response, terminal_.model<ScreenModel>()->page(std::stoul(request.matches[1])));
    });
    server_->Post(R"(/api/([a-z]+(/[a-z]+)?))", [this](const httplib::Request& request, httplib::Response& response) {
        const json body = json::parse(request.body, nullptr, false);
        if (body.is_discarded()) return send_json(response, {{"error", "the body is no JSON"}}, 400);
        try {
            std::lock_guard guard(lock_);
            actions_.act(request.matches[1].str(), body);
            send_json(response, actions_.state(HoldClock::now()));
        } catch (const BadRequest& error) {
            return send_json(response, {{"error", error.what()}}, 400);
        }
        events_.publish("state", json::object());
    });
    server_->Get("/api/events", [this](const httplib::Request&, httplib::Response& response) {
        response.set_header("Cache-Control", "no-store");
        response.set_chunked_content_provider(
            "text/event-stream", [this, after = std::uint64_t{0}](std::size_t, httplib::DataSink& sink) mutable {
                const auto events = events_.since(after, event_wait);
                if (events_.closed()) return false;
                std::string text = events.empty() ? ": still here\n\n" : "";
                for (const PanelEvent& event : events) text += event_text(event);
                if (!events.empty()) after = events.back().number;
                return sink.write(text.data(), text.size());
            });
    });
    server_->set_error_handler([](const httplib::Request&, httplib::Response& response) {
        if (response.body.empty())
            send_json(response, {{"error", response.status == 413 ? "the body is too long" : "no such page"}},
                      response.status);
    });
}

void WebPanel::watch_terminal() {
    std::lock_guard guard(lock_);
    terminal_.on_exchange([this](const Exchange& exchange) {
        json traffic{{"request", hex_of(exchange.request)}, {"reply", hex_of(exchange.reply)}};
        if (!exchange.command.empty()) traffic["command"] = exchange.command;
        traffic["status"] = exchange.status ? json(*exchange.status) : json(nullptr);
        events_.publish("traffic", std::move(traffic));
        const auto* control = terminal_.model<ControlModel>();
        if (control && control->beeps().size() != beeps_seen_) {
            beeps_seen_ = control->beeps().size();
            events_.publish("beep", {{"bytes", hex_of(control->beeps().back())}});
        }
    });
    if (auto* screen = terminal_.model<ScreenModel>())
        screen->on_change([this](const FrameBuffer&) { events_.publish("screen", json::object()); });
    if (auto* lcd = terminal_.model<LcdModel>())
        lcd->on_change([this](const LcdModel& shown) { events_.publish("lcd", {{"text", shown.as_text()}}); });
}

void WebPanel::watch_prompt() {
    bool was_waiting = false;
    while (!stopping_) {
        std::this_thread::sleep_for(prompt_tick);
        std::optional<Terminal::Waiting> waiting;
        std::size_t typed = 0;
        {
            std::lock_guard guard(lock_);
            waiting = terminal_.waiting(HoldClock::now());
            typed = terminal_.person().digits_typed();
        }
        if (waiting)
            events_.publish("prompt", {{"what", waiting->what}, {"left_ms", waiting->left.count()}, {"typed", typed}});
        else if (was_waiting)
            events_.publish("prompt", nullptr);
        was_waiting = waiting.has_value();
    }
}

}  // namespace qz::sim
