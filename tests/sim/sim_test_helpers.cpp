#include "sim_test_helpers.h"

#include <cctype>
#include <stdexcept>
#include <string>

#include "sim/core/status.h"

namespace qz::sim::test {

Bytes hex(std::string_view text) {
    Bytes bytes;
    std::string digits;
    for (char c : text) {
        if (std::isspace(static_cast<unsigned char>(c))) continue;
        digits += c;
        if (digits.size() == 2) {
            bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16)));
            digits.clear();
        }
    }
    if (!digits.empty()) throw std::invalid_argument("odd hex text");
    return bytes;
}

Bytes pattern(std::size_t count, std::uint8_t first) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(first + i);
    return bytes;
}

Reply EchoModel::handle(const Command& command) {
    const auto body = command.body();
    if (command.instruction() == 0x01) return {status::ok, {body.begin(), body.end()}};
    if (command.instruction() == 0x02 && body.size() == 2)
        return {status::ok, pattern((std::size_t{body[0]} << 8) | body[1])};
    return Reply::failure(status::instruction_unknown);
}

std::shared_ptr<Terminal> echo_terminal(const Scenario& scenario) {
    auto terminal = make_terminal(scenario);
    terminal->add_model(std::make_unique<EchoModel>());
    return terminal;
}

Bytes ask_for(std::size_t count) {
    return {EchoModel::class_byte, 0x02, static_cast<std::uint8_t>(count >> 8), static_cast<std::uint8_t>(count)};
}

}  // namespace qz::sim::test
