#include "sim/models/mechanism/mechanism_model.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "sim/core/json_values.h"
#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t mechanism_class = 0x00;
constexpr std::uint8_t device_status = 0x0E;
constexpr std::uint8_t return_to_gate = 0x10;
constexpr std::uint8_t gate_test = 0x11;
constexpr std::uint8_t motor_test = 0x12;
constexpr std::uint8_t query = 0x13;
constexpr std::uint8_t aging = 0x14;
constexpr std::uint8_t move = 0x15;
constexpr std::uint8_t pass_class = 0xC8;
constexpr std::uint8_t pass_data = 0x00;
constexpr std::uint8_t card_identity = 0x01;
// No card where the command needs one.
constexpr std::uint16_t no_card = 0x6A82;

// Body length (parameter byte included) of each mechanism instruction.
struct Instruction {
    std::uint8_t code;
    std::size_t body_length;
};
constexpr std::array<Instruction, 7> instructions{{
    {device_status, 1}, {return_to_gate, 1}, {gate_test, 2}, {motor_test, 3}, {query, 1}, {aging, 2}, {move, 2},
}};

constexpr std::array<std::pair<std::string_view, CardPosition>, 3> position_names{{
    {"none", CardPosition::none}, {"gate", CardPosition::gate}, {"inside", CardPosition::inside},
}};

const Instruction* find_instruction(std::uint8_t code) {
    const auto found = std::ranges::find(instructions, code, &Instruction::code);
    return found == instructions.end() ? nullptr : &*found;
}

Reply byte_reply(std::uint8_t byte) { return {status::ok, {byte}}; }

}  // namespace

std::optional<MechanismConfig> parse_mechanism(const nlohmann::json& document) {
    if (!document.contains("mechanism")) return std::nullopt;
    const auto& section =
        json_object(document["mechanism"], {"position", "device_status", "card_id", "answer"}, "mechanism");
    MechanismConfig config;
    if (section.contains("position")) {
        const auto name = section["position"].is_string() ? section["position"].get<std::string>() : "";
        const auto found = std::ranges::find(position_names, name, &std::pair<std::string_view, CardPosition>::first);
        if (found == position_names.end()) throw ScenarioError("mechanism.position: none, gate or inside");
        config.position = found->second;
    }
    if (section.contains("device_status"))
        config.device_status =
            static_cast<std::uint8_t>(json_number(section["device_status"], 0xFF, "mechanism.device_status"));
    if (section.contains("card_id")) config.card_id = json_bytes(section["card_id"], "mechanism.card_id");
    if (section.contains("answer")) config.answer = json_bytes(section["answer"], "mechanism.answer");
    return config;
}

std::vector<Route> MechanismModel::routes() const {
    return {Route{mechanism_class, {device_status, query, aging, move}}.named(
                "mechanism", {{device_status, "device status"}, {query, "card position"}, {aging, "aging test"},
                              {move, "move card"}}),
            Route{mechanism_class, {return_to_gate, gate_test, motor_test}, true}.named(
                "mechanism", {{return_to_gate, "return card"}, {gate_test, "gate test"}, {motor_test, "motor test"}}),
            Route{pass_class, {pass_data, card_identity}}.named(
                "mechanism", {{pass_data, "pass-through"}, {card_identity, "card identity"}})};
}

bool MechanismModel::takes(const Command& command) const {
    const Instruction* instruction = find_instruction(command.instruction());
    return instruction != nullptr && command.body().size() == instruction->body_length;
}

Reply MechanismModel::handle(const Command& command) {
    return command.class_byte() == pass_class ? pass_through(command) : mechanism(command);
}

Reply MechanismModel::mechanism(const Command& command) {
    const Instruction* instruction = find_instruction(command.instruction());
    const auto body = command.body();
    if (instruction == nullptr) return Reply::failure(status::instruction_unknown);
    if (body.size() != instruction->body_length) return Reply::failure(status::wrong_length);
    switch (instruction->code) {
        case device_status: return byte_reply(config_.device_status);
        case query: return byte_reply(static_cast<std::uint8_t>(config_.position));
        case gate_test:
        case motor_test: tests_.emplace_back(body.begin(), body.end()); return {};
        case aging:
            tests_.emplace_back(body.begin(), body.end());
            aging_cycles_ += body[1];
            return byte_reply(static_cast<std::uint8_t>(aging_cycles_));
        default: break;
    }
    // The moves: return to the gate, or move inward (0) or out to the gate (1).
    if (config_.position == CardPosition::none) return Reply::failure(no_card);
    if (instruction->code == move && body[1] > 1) return Reply::failure(status::out_of_range);
    const bool inward = instruction->code == move && body[1] == 0;
    config_.position = inward ? CardPosition::inside : CardPosition::gate;
    return {};
}

Reply MechanismModel::pass_through(const Command& command) {
    const auto body = command.body();
    if (command.instruction() == card_identity) {
        if (body.size() != 1) return Reply::failure(status::wrong_length);
        if (config_.position == CardPosition::none) return Reply::failure(no_card);
        return {status::ok, config_.card_id};
    }
    if (body.size() < 2) return Reply::failure(status::wrong_length);
    if (config_.answer) return {status::ok, *config_.answer};
    return {status::ok, {body.begin() + 1, body.end()}};
}

}  // namespace qz::sim
