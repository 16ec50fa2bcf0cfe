#include "sim/models/pinpad/keypad_model.h"

#include <algorithm>

#include "sim/core/recent_history.h"
#include "sim/models/pinpad/des_cipher.h"
#include "sim/core/json_values.h"
#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t control_class = 0x00;
constexpr std::uint8_t keypad_instruction = 0x08;
constexpr std::uint8_t esc = 0x1B;
constexpr std::uint8_t serial_number_count = 20;  // the control model's serial number write
constexpr std::size_t keypad_command_offset = 3;   // behind parameter, mode, timeout
constexpr std::size_t clear_command_size = 2;      // ESC, letter
constexpr std::size_t protected_command_size = 11;  // ESC, letter, row, wrapped key
constexpr std::size_t longest_entry = 16;

enum Mode : std::uint8_t { clear = 0, protected_way = 1 };

}  // namespace

KeypadConfig parse_keypad(const nlohmann::json& document) {
    KeypadConfig config;
    if (!document.contains("keypad")) return config;
    const auto& section = json_object(document["keypad"], {"entries"}, "keypad");
    if (section.contains("entries")) config.entries = KeyEntries(section["entries"], "keypad.entries");
    return config;
}

KeypadModel::KeypadModel(KeypadConfig config) : config_(std::move(config)), key_table_(keypad_key_table()) {}

std::vector<Route> KeypadModel::routes() const {
    return {Route{control_class, {keypad_instruction}, true}.named("keypad", {{keypad_instruction, "PIN entry"}})};
}

bool KeypadModel::takes(const Command& command) const {
    const auto body = command.body();
    return body.size() > keypad_command_offset && body[1] != serial_number_count && body[keypad_command_offset] == esc;
}

Reply KeypadModel::handle(const Command& command) {
    const auto body = command.body();
    const std::uint8_t mode = body[1];
    const auto keypad_command = body.subspan(keypad_command_offset);
    if (mode != clear && mode != protected_way) return Reply::failure(status::out_of_range);
    const std::size_t expected_size = mode == clear ? clear_command_size : protected_command_size;
    if (keypad_command.size() != expected_size) return Reply::failure(status::wrong_length);
    const char letter = static_cast<char>(keypad_command[1]);
    if (letter != 'I' && letter != 'E') return Reply::failure(status::wrong_data);
    if (mode == protected_way && keypad_command[2] >= keypad_key_rows) return Reply::failure(status::out_of_range);

    keep_recent(letters_, letter);
    const std::chrono::seconds wait(body[2]);
    if (mode == clear)
        return config_.entries.answer_entry(longest_entry, wait, [](const std::string& digits) {
            return Reply{status::ok, {digits.begin(), digits.end()}};
        });
    DesBlock wrapped{};
    std::copy_n(keypad_command.begin() + 3, wrapped.size(), wrapped.begin());
    const DesBlock session_key = des_decrypt(wrapped, key_table_[keypad_command[2]]);
    return config_.entries.answer_entry(longest_entry, wait, [session_key](const std::string& digits) {
        return protected_entry(session_key, digits);
    });
}

Reply KeypadModel::protected_entry(const DesBlock& session_key, const std::string& digits) {

    std::vector<std::uint8_t> data(digits.size() > 8 ? 16 : 8, 0x00);
    std::copy(digits.begin(), digits.end(), data.begin());
    encipher_blocks(data, session_key);
    return {status::ok, std::move(data)};
}

}  // namespace qz::sim
