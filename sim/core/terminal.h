// The terminal's firmware: takes request payloads and dispatches them by class
// (and, where models share a class, by instruction) to the device models.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "sim/core/faults.h"
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

struct Reply {
    std::uint16_t status = 0;
    std::vector<std::uint8_t> data;
    bool silent = false;  // the device doesn't answer: no reply frame at all

    static Reply failure(std::uint16_t status) { return {status, {}}; }
    static Reply none() { return {0, {}, true}; }
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
};

class DeviceModel {
public:
    virtual ~DeviceModel() = default;
    virtual std::vector<Route> routes() const = 0;
    virtual Reply handle(const Command& command) = 0;
    // For the instructions of a shared route: whether `command` is this model's.
    virtual bool takes(const Command&) const { return true; }
};

// What the models see of the terminal as a whole.
struct SharedState {
    // Where the card is, as class 0x00 reports it; set by the scenario and by
    // the models that move cards.
    std::uint8_t card_state = 0;
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

    // Carries out one request payload.
    Reply execute(std::span<const std::uint8_t> payload);

    // Exactly one reply frame, unless a fault of the scenario says otherwise.
    std::vector<std::uint8_t> answer(std::span<const std::uint8_t> request_frame) override;

private:
    // Some model serves single instructions of this class.
    bool serves_instructions_of(std::uint8_t class_byte) const;

    std::vector<std::unique_ptr<DeviceModel>> models_;
    std::array<DeviceModel*, 256> class_owner_{};
    std::map<std::pair<std::uint8_t, std::uint8_t>, DeviceModel*> instruction_owner_;
    std::multimap<std::pair<std::uint8_t, std::uint8_t>, DeviceModel*> instruction_sharers_;
    FaultPlan faults_;
    SharedState shared_;
};

}  // namespace qz::sim
