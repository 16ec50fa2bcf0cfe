#include "sim/models/identity/identity_model.h"

#include <stdexcept>

#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t module_class = 0x32;
constexpr std::uint8_t read_instruction = 0x50;
constexpr std::uint8_t module_id_instruction = 0x51;
constexpr std::uint8_t recording_class = 0xD0;
constexpr std::uint8_t read_with_finger_instruction = 0x07;

void append_be16(std::vector<std::uint8_t>& out, std::size_t value) {
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

void append(std::vector<std::uint8_t>& out, std::span<const std::uint8_t> bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

}  // namespace

IdentityModel::IdentityModel(IdentityConfig config) : config_(std::move(config)) {}

std::vector<Route> IdentityModel::routes() const {
    return {Route{module_class, {read_instruction, module_id_instruction}}.named(
                "identity module", {{read_instruction, "read card"}, {module_id_instruction, "module identifier"}}),
            Route{recording_class, {read_with_finger_instruction}}.named(
                "identity module", {{read_with_finger_instruction, "read card with finger data"}})};
}

Reply IdentityModel::handle(const Command& command) {
    if (command.class_byte() == recording_class) return read(command.body(), Read::with_finger);
    if (command.instruction() == module_id_instruction) return module_id(command.body());
    return read(command.body(), Read::text_and_photo);
}

void IdentityModel::present(std::optional<std::string> card) {
    if (card && !config_.cards.contains(*card)) throw std::out_of_range("no identity card \"" + *card + "\"");
    config_.present = std::move(card);
}

Reply IdentityModel::read(std::span<const std::uint8_t> body, Read what) const {
    if (body.size() != 1) return Reply::failure(status::wrong_length);
    if (body[0] != 0) return Reply::failure(status::out_of_range);
    const auto answer = module_answer(what);
    Reply reply{status::ok, {}};
    append_be16(reply.data, answer.size());
    append(reply.data, answer);
    return reply;
}

std::vector<std::uint8_t> IdentityModel::module_answer(Read what) const {
    const IdentityCard* card = config_.present ? &config_.cards.at(*config_.present) : nullptr;
    const ModuleStatus status = config_.status != module_ok ? config_.status
                                : card != nullptr           ? module_ok
                                                            : module_card_missing;
    std::vector<std::uint8_t> answer(status.begin(), status.end());
    if (status != module_ok) return answer;

    const bool finger = what == Read::with_finger;
    append_be16(answer, card->text.size());
    append_be16(answer, card->photo.size());
    if (finger) append_be16(answer, card->finger.size());
    append(answer, card->text);
    append(answer, card->photo);
    if (finger) append(answer, card->finger);
    return answer;
}

Reply IdentityModel::module_id(std::span<const std::uint8_t> body) const {
    if (!body.empty()) return Reply::failure(status::wrong_length);
    return {status::ok, config_.module_id};
}

}  // namespace qz::sim
