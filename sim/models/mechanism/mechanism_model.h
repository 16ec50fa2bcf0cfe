// The card transport mechanism, on terminals fitted with one (a scenario with a
// "mechanism" section):
//
//   00 0E 00        the device status byte
//   00 10 00        returns the card to the gate
//   00 11 00 v      magnetic gate test
//   00 12 00 a b    motor test
//   00 13 00        the status byte: where the card is (0 none, 1 at the gate, 2 inside)
//   00 14 00 v      aging test of v cycles: the cycles run so far, low byte
//   00 15 00 d      moves the card: 0 inward, 1 out to the gate
//   C8 00 00 data   pass-through: the mechanism's answer from the scenario, else the data echoed
//   C8 01 00        the identity of the card in the mechanism
//
// A terminal with a line LCD uses 0x10 to 0x12 for it; the mechanism shares those
// instructions and takes them when their length is its own.
//
//   "mechanism": { "position": "gate", "device_status": 0, "card_id": {"hex": "..."}, "answer": {"hex": "..."} }
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <nlohmann/json.hpp>

#include "sim/core/terminal.h"

namespace qz::sim {

enum class CardPosition : std::uint8_t { none = 0, gate = 1, inside = 2 };

struct MechanismConfig {
    CardPosition position = CardPosition::gate;
    std::uint8_t device_status = 0;
    std::vector<std::uint8_t> card_id{0x5A, 0x3C, 0x91, 0x07};
    std::optional<std::vector<std::uint8_t>> answer;
};

// The "mechanism" section, or nothing when the terminal has no mechanism.
std::optional<MechanismConfig> parse_mechanism(const nlohmann::json& document);

class MechanismModel final : public DeviceModel {
public:
    explicit MechanismModel(MechanismConfig config) : config_(std::move(config)) {}

    std::vector<Route> routes() const override;
    bool takes(const Command& command) const override;
    Reply handle(const Command& command) override;

    CardPosition position() const { return config_.position; }
    // The tests run: gate values, motor pairs, aging cycles.
    const std::vector<std::vector<std::uint8_t>>& tests() const { return tests_; }

private:
    Reply mechanism(const Command& command);
    Reply pass_through(const Command& command);

    MechanismConfig config_;
    std::vector<std::vector<std::uint8_t>> tests_;
    unsigned aging_cycles_ = 0;
};

}  // namespace qz::sim
