// The terminal's firmware: takes request payloads and dispatches them by class
// (and, where models share a class, by instruction) to the device models.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "sim/core/card_holder.h"
#include "sim/core/faults.h"
#include "sim/core/person.h"
#include "sim/core/responder.h"

namespace qz::sim {

// A request payload of at least two bytes: class, instruction, then the
// parameter and data that make the body.
struct Command {
    std::span<const std::uint8_t> payload;

    std::uint8_t class_byte() const { return payload[0]; }
    std::uint8_t instruction() const { return payload[1]; }
    std::span<const std::uint8_t> body() const { return payload.subspan(2); }
};

struct HeldReply;

struct Reply {
    std::uint16_t status = 0;
    std::vector<std::uint8_t> data;
    bool silent = false;  // the device doesn't answer: no reply frame at all
    // Not yet: the reply waits for a person (see held_reply.h).
    std::shared_ptr<const HeldReply> held{};

    static Reply failure(std::uint16_t status) { return {status, {}}; }
    static Reply none() { return {0, {}, true}; }
    static Reply hold(HeldReply waiting);
};

// One request and the reply that went back, as a traffic view shows them.
struct Exchange {
    std::vector<std::uint8_t> request;  // the payload: class, instruction, body
    std::string command;                // what the answering model calls it; empty: unnamed
    std::optional<std::uint16_t> status;  // nothing: no reply went back
    std::vector<std::uint8_t> reply;    // the reply's data
};

// The part of the command space a model answers: one class, either all of its
// instructions (none listed) or only those listed.
//
// A shared route lists instructions that another model owns as well (the firmware
// tells the two apart by the body): the sharing model is asked first, through
// DeviceModel::takes, and the owner gets what it leaves.
struct Route {
    std::uint8_t class_byte = 0;
    std::vector<std::uint8_t> instructions;
    bool shared = false;
    // What a traffic view calls the route's requests: the device, and the
    // instructions that have a name, by their byte.
    std::string device{};
    std::map<std::uint8_t, std::string> names{};

    Route named(std::string device_name, std::map<std::uint8_t, std::string> instruction_names = {}) && {
        device = std::move(device_name);
        names = std::move(instruction_names);
        return std::move(*this);
    }
};

class DeviceModel {
public:
    virtual ~DeviceModel() = default;
    virtual std::vector<Route> routes() const = 0;
    virtual Reply handle(const Command& command) = 0;
    // For the instructions of a shared route: whether `command` is this model's.
    virtual bool takes(const Command&) const { return true; }
};

class CardHolder;

// What the models see of the terminal as a whole.
struct SharedState {
    // Where the card is, as class 0x00 reports it: the scenario's value, joined
    // by the cards that the card holders hold now.
    std::uint8_t card_state = 0;
    // The models that hold cards, in the order the terminal took them.
    std::vector<CardHolder*> card_holders;

    std::uint8_t card_state_now() const;
    // Whether a card holder other than `asking` has a card at the place.
    bool held_by_other(const CardHolder& asking, CardLocation location, std::size_t slot) const;
};

class Terminal final : public Responder {
public:
    explicit Terminal(FaultPlan faults = {}, SharedState shared = {});
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // Registers a model for its routes; a route another model holds is refused
    // with std::logic_error.
    void add_model(std::unique_ptr<DeviceModel> model);

    // The first registered model of type `Model`, or nullptr.
    template <class Model>
    Model* model() const {
        for (const auto& candidate : models_)
            if (auto* found = dynamic_cast<Model*>(candidate.get())) return found;
        return nullptr;
    }

    SharedState& shared() { return shared_; }
    FaultPlan& faults() { return faults_; }
    Person& person() { return person_; }

    // The routes of every model, in the order the models were added.
    std::vector<Route> routes() const;
    // "device: instruction" as the model that takes the request names it; empty
    // when no model takes it or the model names no such instruction.
    std::string command_name(std::span<const std::uint8_t> payload) const;

    // Carries out one request payload.
    Reply execute(std::span<const std::uint8_t> payload);

    // The bytes that go back on the wire for one whole request frame: exactly
    // one reply frame, unless a fault of the scenario says otherwise.
    // A held reply leaves nothing to send yet, until release gives it; a new
    // request drops a held reply (the host has given up on it).
    std::vector<std::uint8_t> answer(std::span<const std::uint8_t> request_frame) override;

    bool holding() const override { return held_ != nullptr; }
    // The held reply's bytes once the person has acted or the time is up;
    // nothing while it still waits.
    std::optional<std::vector<std::uint8_t>> release(std::chrono::steady_clock::time_point now) override;

    // What a held reply waits for and the time left.
    struct Waiting {
        std::string what;
        std::chrono::milliseconds left;
    };
    std::optional<Waiting> waiting(std::chrono::steady_clock::time_point now) const;

    // Called with every request answered (a held one once released).
    void on_exchange(std::function<void(const Exchange&)> listener) { exchange_listener_ = std::move(listener); }

private:
    struct Held {
        std::shared_ptr<const HeldReply> reply;
        std::vector<std::uint8_t> request;
        std::string command;
        std::optional<Fault> fault;
    };
    std::vector<std::uint8_t> send(const Reply& reply, std::span<const std::uint8_t> request, std::string command,
                                   const std::optional<Fault>& fault);
    // The model that takes the command: a sharer that claims it, else the owner.
    DeviceModel* model_for(const Command& command) const;

    // Some model serves single instructions of this class.
    bool serves_instructions_of(std::uint8_t class_byte) const;

    std::vector<std::unique_ptr<DeviceModel>> models_;
    std::array<DeviceModel*, 256> class_owner_{};
    std::map<std::pair<std::uint8_t, std::uint8_t>, DeviceModel*> instruction_owner_;
    std::multimap<std::pair<std::uint8_t, std::uint8_t>, DeviceModel*> instruction_sharers_;
    FaultPlan faults_;
    SharedState shared_;
    Person person_;
    std::unique_ptr<Held> held_;
    std::function<void(const Exchange&)> exchange_listener_;
};

}  // namespace qz::sim
