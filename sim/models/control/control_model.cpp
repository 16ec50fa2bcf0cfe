#include "sim/models/control/control_model.h"

#include <algorithm>

#include "sim/core/frame_codec.h"
#include "sim/core/recent_history.h"
#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t control_class = 0x00;
constexpr std::uint8_t max_speed_code = 4;
constexpr std::size_t eeprom_header = 4;  // parameter, word, count_hi, count_lo
// Reply data one frame holds: the frame less its five bytes and the status and reserved bytes.
constexpr std::size_t max_reply_data = max_frame_length - frame_overhead - 3;

Reply ok(std::span<const std::uint8_t> data = {}) { return {status::ok, {data.begin(), data.end()}}; }

// Byte count of an EEPROM command, big-endian behind the word number.
std::size_t eeprom_count(std::span<const std::uint8_t> body) { return (std::size_t{body[2]} << 8) | body[3]; }

}  // namespace

const std::array<ControlModel::Instruction, 11> ControlModel::instructions{{
    {0x01, 1, &ControlModel::version, "version"},
    {0x02, 4, &ControlModel::beep, "buzzer"},
    {0x03, 2, &ControlModel::display, "display mode"},
    {0x04, 2, &ControlModel::speed, "serial speed"},
    {0x07, 1, &ControlModel::card_state, "card state"},
    {0x08, 2 + serial_number_length, &ControlModel::write_serial_number, "serial number write"},
    {0x09, 2, &ControlModel::read_serial_number, "serial number read"},
    {0x0A, std::nullopt, &ControlModel::write_eeprom, "EEPROM write"},
    {0x0B, eeprom_header, &ControlModel::read_eeprom, "EEPROM read"},
    {0x0F, 1, &ControlModel::registration_number, "registration number"},
    {echo_instruction, std::nullopt, &ControlModel::echo, "echo"},
}};

ControlModel::ControlModel(ControlConfig config, SharedState& shared) : config_(std::move(config)), shared_(shared) {}

std::vector<Route> ControlModel::routes() const {
    Route route = Route{control_class, {}}.named("terminal");
    for (const Instruction& instruction : instructions) {
        route.instructions.push_back(instruction.code);
        route.names[instruction.code] = instruction.name;
    }
    return {route};
}

Reply ControlModel::handle(const Command& command) {
    const auto found = std::find_if(instructions.begin(), instructions.end(),
                                    [&](const Instruction& entry) { return entry.code == command.instruction(); });
    if (found == instructions.end()) return Reply::failure(status::instruction_unknown);
    if (found->body_length && command.body().size() != *found->body_length) return Reply::failure(status::wrong_length);
    return (this->*found->run)(command.body());
}

Reply ControlModel::version(std::span<const std::uint8_t>) { return ok(config_.version); }

Reply ControlModel::beep(std::span<const std::uint8_t> body) {
    keep_recent(beeps_, Beep{body[1], body[2], body[3]});
    return ok();
}

Reply ControlModel::display(std::span<const std::uint8_t> body) {
    display_mode_ = body[1];
    return ok();
}

Reply ControlModel::speed(std::span<const std::uint8_t> body) {
    if (body[1] > max_speed_code) return Reply::failure(status::out_of_range);
    speed_code_ = body[1];
    return ok();
}

Reply ControlModel::card_state(std::span<const std::uint8_t>) { return ok(std::array{shared_.card_state_now()}); }

Reply ControlModel::write_serial_number(std::span<const std::uint8_t> body) {
    if (body[1] != serial_number_length) return Reply::failure(status::wrong_length);
    std::copy(body.begin() + 2, body.end(), config_.serial_number.begin());
    return ok();
}

Reply ControlModel::read_serial_number(std::span<const std::uint8_t> body) {
    const std::size_t count = body[1];
    if (count == 0 || count > serial_number_length) return Reply::failure(status::out_of_range);
    return ok(std::span(config_.serial_number).first(count));
}

Reply ControlModel::registration_number(std::span<const std::uint8_t>) { return ok(config_.registration_number); }

std::optional<std::span<std::uint8_t>> ControlModel::eeprom_range(std::span<const std::uint8_t> body) {
    const std::size_t start = std::size_t{body[1]} * 2;
    const std::size_t count = eeprom_count(body);
    if (count % 2 != 0 || start + count > config_.eeprom.size()) return std::nullopt;
    return std::span(config_.eeprom).subspan(start, count);
}

Reply ControlModel::read_eeprom(std::span<const std::uint8_t> body) {
    const auto range = eeprom_range(body);
    if (!range) return Reply::failure(status::out_of_range);
    return ok(*range);
}

Reply ControlModel::write_eeprom(std::span<const std::uint8_t> body) {
    if (body.size() < eeprom_header) return Reply::failure(status::wrong_length);
    const auto data = body.subspan(eeprom_header);
    if (data.size() != eeprom_count(body)) return Reply::failure(status::wrong_length);
    const auto range = eeprom_range(body);
    if (!range) return Reply::failure(status::out_of_range);
    std::copy(data.begin(), data.end(), range->begin());
    return ok();
}

Reply ControlModel::echo(std::span<const std::uint8_t> body) {
    if (body.size() > max_reply_data) return Reply::failure(status::wrong_length);
    return ok(body);
}

}  // namespace qz::sim
