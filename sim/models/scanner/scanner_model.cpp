#include "sim/models/scanner/scanner_model.h"

#include <algorithm>
#include <array>

#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t scanner_class = 0xC6;
constexpr std::uint8_t read_code = 0x01;
constexpr std::uint8_t polled = 0x02;
constexpr std::uint8_t reading = 0x03;
constexpr std::uint8_t output = 0x04;
constexpr std::uint8_t pass_class = 0xC5;
constexpr std::uint8_t pass_instruction = 0x0F;
constexpr std::uint8_t esc = 0x1B;
constexpr std::uint8_t scanner_mark = 'H';
constexpr std::uint8_t version_order = 0x51;
constexpr std::uint8_t direct_read = 0x50;
constexpr std::uint8_t loader_order = 0x60;
constexpr std::uint8_t poll_byte = 0x01;
constexpr std::uint8_t shortest_wait = 2;
constexpr std::uint8_t longest_wait = 10;

constexpr std::array<std::uint8_t, 12> start_frame{0x00, 0x00, 0x7E, 0x00, 0x08, 0x01, 0x00, 0x02, 0x01, 0x02, 0xDA};
constexpr std::array<std::uint8_t, 12> stop_frame{0x00, 0x00, 0x7E, 0x00, 0x08, 0x01, 0x00, 0x02, 0x00, 0x12, 0xFB};
constexpr std::array<std::uint8_t, 7> acknowledgement{0x02, 0x00, 0x00, 0x01, 0x00, 0x33, 0x31};

Reply framed(std::span<const std::uint8_t> text) {
    Reply reply{status::ok, std::vector<std::uint8_t>(text.size() + 2, 0x02)};
    std::copy(text.begin(), text.end(), reply.data.begin() + 1);
    reply.data.back() = 0x03;
    return reply;
}

bool is_wait(std::uint8_t wait) { return wait >= shortest_wait && wait <= longest_wait; }

}  // namespace

std::vector<Route> ScannerModel::routes() const {
    return {Route{scanner_class, {polled, reading, output}}.named(
                "scanner",
                {{polled, "continuous or polled reading"}, {reading, "polled reading on/off"}, {output, "output"}}),
            Route{scanner_class, {read_code}, true}.named("scanner", {{read_code, "read code"}}),
            Route{pass_class, {pass_instruction}, true}.named("scanner", {{pass_instruction, "scanner message"}})};
}

bool ScannerModel::takes(const Command& command) const {
    const auto body = command.body();
    if (command.class_byte() == scanner_class) return body.size() == 2;
    return body.size() >= 4 && body[1] == esc && body[2] == scanner_mark;
}

Reply ScannerModel::handle(const Command& command) {
    const auto body = command.body();
    if (command.class_byte() == pass_class) return own_message(body[0], body.subspan(3));
    return terminal_command(command);
}

Reply ScannerModel::terminal_command(const Command& command) {
    const auto body = command.body();
    const auto frame_is = [&](std::span<const std::uint8_t> frame) {
        return body.size() == frame.size() - 1 && std::equal(body.begin(), body.end(), frame.begin());
    };
    switch (command.instruction()) {
        case read_code: {
            if (!is_wait(body[1])) return Reply::failure(status::out_of_range);
            auto code = next_code();
            if (!code) return Reply::failure(status::entry_timed_out);
            return {status::ok, std::move(*code)};
        }
        case polled:
            if (frame_is(start_frame) || frame_is(stop_frame)) {
                polling_ = frame_is(start_frame);
                acknowledged_ = false;
                return {};
            }
            if (body.size() != 2) return Reply::failure(status::wrong_length);
            if (body[1] == poll_byte) return poll();
            if (!is_wait(body[1])) return Reply::failure(status::out_of_range);
            continuous_ = true;
            return {};
        case reading:
            if (body.size() != 2 || body[1] > 1) return Reply::failure(status::wrong_data);
            return {};
        default:
            if (body.size() != 2) return Reply::failure(status::wrong_length);
            output_mode_ = body[1];
            return {};
    }
}

Reply ScannerModel::poll() {
    if (!polling_) return Reply::failure(status::wrong_data);
    if (config_.polls_before_code > 0) {
        --config_.polls_before_code;
        return Reply::failure(status::entry_timed_out);
    }
    if (acknowledged_ || config_.acknowledge_apart) {
        if (!acknowledged_) {
            acknowledged_ = true;
            return {status::ok, {acknowledgement.begin(), acknowledgement.end()}};
        }
        auto code = next_code();
        if (!code) return Reply::failure(status::entry_timed_out);
        return {status::ok, std::move(*code)};
    }
    auto code = next_code();
    if (!code) return Reply::failure(status::entry_timed_out);
    acknowledged_ = true;
    Reply reply{status::ok, {acknowledgement.begin(), acknowledgement.end()}};
    reply.data.insert(reply.data.end(), code->begin(), code->end());
    return reply;
}

Reply ScannerModel::own_message(std::uint8_t parameter, std::span<const std::uint8_t> message) {
    if (message.empty()) return Reply::failure(status::wrong_length);
    if (message[0] == loader_order) return loader_.handle(parameter, message.subspan(1));
    if (loader_.running() || !config_.version || message.size() != 1) return Reply::failure(status::instruction_unknown);
    if (message[0] == version_order) {
        const std::string& text = *config_.version;
        return framed(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    }
    if (message[0] != direct_read) return Reply::failure(status::instruction_unknown);
    auto code = next_code();
    if (!code) return Reply::failure(status::entry_timed_out);
    return framed(*code);
}

std::optional<std::vector<std::uint8_t>> ScannerModel::next_code() {
    if (config_.codes.empty()) return std::nullopt;
    auto code = std::move(config_.codes.front());
    config_.codes.pop_front();
    return code;
}

}  // namespace qz::sim
