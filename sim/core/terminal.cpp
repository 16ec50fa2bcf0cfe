#include "sim/core/terminal.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>

#include "sim/core/frame_codec.h"
#include "sim/core/held_reply.h"
#include "sim/core/status.h"

namespace qz::sim {

Terminal::Terminal(FaultPlan faults, SharedState shared) : faults_(std::move(faults)), shared_(shared) {}

void Terminal::add_model(std::unique_ptr<DeviceModel> model) {
    const auto routes = model->routes();
    // All routes are checked before any is taken, so a refused model leaves nothing behind.
    for (const Route& route : routes) {
        if (route.shared) {
            if (route.instructions.empty()) throw std::logic_error("a shared route lists its instructions");
            continue;
        }
        const bool instructions_taken =
            route.instructions.empty()
                ? serves_instructions_of(route.class_byte)
                : std::any_of(route.instructions.begin(), route.instructions.end(), [&](std::uint8_t instruction) {
                      return instruction_owner_.contains({route.class_byte, instruction});
                  });
        if (class_owner_[route.class_byte] || instructions_taken)
            throw std::logic_error("class " + std::to_string(route.class_byte) + " is served twice");
    }
    for (const Route& route : routes) {
        if (route.instructions.empty()) class_owner_[route.class_byte] = model.get();
        for (std::uint8_t instruction : route.instructions) {
            if (route.shared)
                instruction_sharers_.emplace(std::pair{route.class_byte, instruction}, model.get());
            else
                instruction_owner_[{route.class_byte, instruction}] = model.get();
        }
    }
    if (auto* holder = dynamic_cast<CardHolder*>(model.get())) shared_.card_holders.push_back(holder);
    models_.push_back(std::move(model));
}

std::uint8_t SharedState::card_state_now() const {
    std::uint8_t state = card_state;
    for (const CardHolder* holder : card_holders) state |= holder->card_state();
    return state;
}

bool SharedState::held_by_other(const CardHolder& asking, CardLocation location, std::size_t slot) const {
    return std::ranges::any_of(card_holders, [&](const CardHolder* holder) {
        return holder != &asking && holder->holds(location, slot);
    });
}

std::vector<Route> Terminal::routes() const {
    std::vector<Route> routes;
    for (const auto& model : models_) std::ranges::move(model->routes(), std::back_inserter(routes));
    return routes;
}

DeviceModel* Terminal::model_for(const Command& command) const {
    const auto sharers = instruction_sharers_.equal_range({command.class_byte(), command.instruction()});
    for (auto sharer = sharers.first; sharer != sharers.second; ++sharer)
        if (sharer->second->takes(command)) return sharer->second;
    if (DeviceModel* owner = class_owner_[command.class_byte()]) return owner;
    const auto found = instruction_owner_.find({command.class_byte(), command.instruction()});
    return found != instruction_owner_.end() ? found->second : nullptr;
}

std::string Terminal::command_name(std::span<const std::uint8_t> payload) const {
    if (payload.size() < 2) return {};
    const Command command{payload};
    const DeviceModel* model = model_for(command);
    if (!model) return {};
    for (const Route& route : model->routes()) {
        if (route.class_byte != command.class_byte()) continue;
        if (const auto name = route.names.find(command.instruction()); name != route.names.end())
            return route.device + ": " + name->second;
    }
    return {};
}

Reply Terminal::execute(std::span<const std::uint8_t> payload) {
    if (payload.size() < 2) return Reply::failure(status::damaged_request);
    const Command command{payload};
    if (DeviceModel* model = model_for(command)) return model->handle(command);
    return Reply::failure(serves_instructions_of(command.class_byte()) ? status::instruction_unknown
                                                                       : status::class_unknown);
}

bool Terminal::serves_instructions_of(std::uint8_t class_byte) const {
    const auto first = instruction_owner_.lower_bound({class_byte, 0});
    return first != instruction_owner_.end() && first->first.first == class_byte;
}

Reply Reply::hold(HeldReply waiting) {
    Reply reply;
    reply.held = std::make_shared<const HeldReply>(std::move(waiting));
    return reply;
}

std::vector<std::uint8_t> Terminal::answer(std::span<const std::uint8_t> request_frame) {
    held_.reset();
    const auto payload = frame_payload(request_frame);
    std::optional<Fault> fault;
    if (payload && payload->size() >= 2) fault = faults_.take((*payload)[0], (*payload)[1]);

    // Named for a listener only, before the model acts (which may change what decides the model).
    std::string command = payload && exchange_listener_ ? command_name(*payload) : std::string();
    Reply reply;
    if (!payload)
        reply = Reply::failure(status::damaged_request);
    else if (fault && fault->kind == FaultKind::status)
        reply = Reply::failure(fault->status);
    else
        reply = execute(*payload);
    const auto request = payload ? *payload : std::span<const std::uint8_t>{};
    if (reply.held) {
        held_ = std::make_unique<Held>(Held{reply.held, {request.begin(), request.end()}, std::move(command), fault});
        return {};
    }
    return send(reply, request, std::move(command), fault);
}

std::optional<std::vector<std::uint8_t>> Terminal::release(std::chrono::steady_clock::time_point now) {
    if (!held_) return std::nullopt;
    auto reply = held_->reply->ready();
    if (!reply && now < held_->reply->deadline) return std::nullopt;
    const auto held = std::move(held_);
    return send(reply ? *reply : held->reply->on_timeout, held->request, held->command, held->fault);
}

std::optional<Terminal::Waiting> Terminal::waiting(std::chrono::steady_clock::time_point now) const {
    if (!held_) return std::nullopt;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(held_->reply->deadline - now);
    return Waiting{held_->reply->waiting_for, std::max(left, std::chrono::milliseconds(0))};
}

std::vector<std::uint8_t> Terminal::send(const Reply& reply, std::span<const std::uint8_t> request, std::string command,
                                         const std::optional<Fault>& fault) {
    if (exchange_listener_)
        exchange_listener_({{request.begin(), request.end()},
                            std::move(command),
                            reply.silent ? std::nullopt : std::optional(reply.status),
                            reply.data});
    if (reply.silent) return {};
    auto frame = encode_frame(reply_payload(reply.status, reply.data));
    return fault ? damage(*fault, std::move(frame)) : frame;
}

}  // namespace qz::sim
