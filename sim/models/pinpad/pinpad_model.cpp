#include "sim/models/pinpad/pinpad_model.h"

#include <algorithm>
#include <functional>

#include "sim/core/recent_history.h"
#include "sim/models/pinpad/des_cipher.h"
#include "sim/core/json_values.h"
#include "sim/core/status.h"

namespace qz::sim {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Body = std::span<const std::uint8_t>;

constexpr std::uint8_t pad_class = 0xC5;
constexpr std::uint8_t esc = 0x1B;
constexpr std::uint8_t longest_pin_length = 18;
constexpr std::size_t shortest_block_pin = 4;
constexpr std::size_t longest_block_pin = 12;
constexpr std::size_t account_field_size = 8;

Reply ok(Body data = {}) { return {status::ok, {data.begin(), data.end()}}; }

std::size_t key_length(std::uint8_t keymode) { return keymode == 0 ? 8 : 16; }

// How an entry command opens: ESC and 'I' or 'E', or ESC 'H' and a selector digit.
struct Opening {
    std::string name;   // "I", "E", "H0" ... "H3"
    std::size_t size;   // bytes behind the parameter byte
};

std::optional<Opening> opening_of(Body body) {
    if (body.size() < 3 || body[1] != esc) return std::nullopt;
    const char letter = static_cast<char>(body[2]);
    if (letter == 'I' || letter == 'E') return Opening{std::string(1, letter), 2};
    if (letter == 'H' && body.size() >= 4 && body[3] >= '0' && body[3] <= '3')
        return Opening{std::string{letter, static_cast<char>(body[3])}, 3};
    return std::nullopt;
}

bool is_next_key(Body body) { return body.size() == 2 && body[1] == 0x00; }

PadKeys parse_keys(const nlohmann::json& list, const std::string& where) {
    if (!list.is_array()) throw ScenarioError(where + ": expected a list of {\"number\", \"key\"}");
    PadKeys keys;
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string place = where + "[" + std::to_string(i) + "]";
        const auto& item = json_object(list[i], {"number", "key"}, place);
        if (!item.contains("number") || !item.contains("key")) throw ScenarioError(place + ": needs number and key");
        const auto number = json_number(item["number"], pad_key_count - 1, place + ".number");
        auto key = json_bytes(item["key"], place + ".key");
        if (key.size() != 8 && key.size() != 16) throw ScenarioError(place + ".key: 8 or 16 bytes");
        keys[number] = std::move(key);
    }
    return keys;
}

// The PIN field of format 0: 0, the length, the digits, F to the end of 16 nibbles.
Bytes pin_field(const std::string& digits) {
    std::array<std::uint8_t, 16> nibbles;
    nibbles.fill(0xF);
    nibbles[0] = 0;
    nibbles[1] = static_cast<std::uint8_t>(digits.size());
    for (std::size_t i = 0; i < digits.size(); ++i) nibbles[2 + i] = static_cast<std::uint8_t>(digits[i] - '0');
    Bytes field(8);
    for (std::size_t i = 0; i < field.size(); ++i)
        field[i] = static_cast<std::uint8_t>(nibbles[2 * i] << 4 | nibbles[2 * i + 1]);
    return field;
}

}  // namespace

PinPadConfig parse_pinpad(const nlohmann::json& document) {
    PinPadConfig config;
    if (!document.contains("pinpad")) return config;
    const auto& section = json_object(
        document["pinpad"], {"type", "timeout", "pin_length", "main_keys", "work_keys", "entries"}, "pinpad");
    if (section.contains("type")) config.type = static_cast<int>(json_number(section["type"], 255, "pinpad.type"));
    if (section.contains("timeout"))
        config.timeout_seconds = static_cast<std::uint8_t>(json_number(section["timeout"], 255, "pinpad.timeout"));
    if (section.contains("pin_length")) {
        config.pin_length =
            static_cast<std::uint8_t>(json_number(section["pin_length"], longest_pin_length, "pinpad.pin_length"));
        if (config.pin_length == 0) throw ScenarioError("pinpad.pin_length: 1 to 18");
    }
    if (section.contains("main_keys")) config.main_keys = parse_keys(section["main_keys"], "pinpad.main_keys");
    if (section.contains("work_keys")) config.work_keys = parse_keys(section["work_keys"], "pinpad.work_keys");
    if (section.contains("entries")) config.entries = KeyEntries(section["entries"], "pinpad.entries");
    return config;
}

const std::array<PinPadModel::SubCommand, 11> PinPadModel::sub_commands{{
    {0x01, std::nullopt, &PinPadModel::set_timeout, "time-out"},
    {0x02, std::nullopt, &PinPadModel::set_pin_length, "PIN length"},
    {0x03, std::nullopt, &PinPadModel::load_main_key, "main key load"},
    {0x04, std::nullopt, &PinPadModel::load_work_key, "work key load"},
    {0x05, true, &PinPadModel::clear_entry, "PIN entry, clear"},
    {0x06, true, &PinPadModel::encrypted_entry, "PIN entry, encrypted"},
    {0x07, std::nullopt, &PinPadModel::load_work_key, "work key load (second form)"},
    {0x08, std::nullopt, &PinPadModel::entry_without_card, "PIN entry, encrypted, no card number"},
    {0x09, false, &PinPadModel::clear_entry, "PIN entry, clear, or next key"},
    {0x0A, false, &PinPadModel::encrypted_entry, "PIN entry, encrypted, or next key as *"},
    {0x0E, std::nullopt, &PinPadModel::set_output_mode, "output mode"},
}};

std::vector<Route> PinPadModel::routes() const {
    Route route = Route{pad_class, {}}.named("PIN pad");
    for (const SubCommand& sub_command : sub_commands) {
        route.instructions.push_back(sub_command.code);
        route.names[sub_command.code] = sub_command.name;
    }
    return {route};
}

Reply PinPadModel::handle(const Command& command) {
    const auto found = std::ranges::find(sub_commands, command.instruction(), &SubCommand::code);
    if (found == sub_commands.end()) return Reply::failure(status::instruction_unknown);
    if (found->type_one && *found->type_one != (config_.type == 1)) return Reply::failure(status::instruction_unknown);
    if (command.body().empty()) return Reply::failure(status::wrong_length);
    return (this->*found->run)(command.body());
}

Reply PinPadModel::set_timeout(Body body) {
    if (body.size() != 2) return Reply::failure(status::wrong_length);
    config_.timeout_seconds = body[1];
    return ok();
}

Reply PinPadModel::set_pin_length(Body body) {
    if (body.size() != 2) return Reply::failure(status::wrong_length);
    if (body[1] == 0 || body[1] > longest_pin_length) return Reply::failure(status::out_of_range);
    config_.pin_length = body[1];
    return ok();
}

Reply PinPadModel::set_output_mode(Body body) {
    if (body.size() != 2) return Reply::failure(status::wrong_length);
    output_mode_ = body[1];
    return ok();
}

Reply PinPadModel::load_main_key(Body body) {
    if (body.size() < 3 || body[1] > 1) return Reply::failure(body.size() < 3 ? status::wrong_length : status::wrong_data);
    if (body.size() != 3 + key_length(body[1])) return Reply::failure(status::wrong_length);
    if (body[2] >= pad_key_count) return Reply::failure(status::out_of_range);
    config_.main_keys[body[2]].assign(body.begin() + 3, body.end());
    return ok();
}

Reply PinPadModel::load_work_key(Body body) {
    if (body.size() < 4 || body[1] > 1) return Reply::failure(body.size() < 4 ? status::wrong_length : status::wrong_data);
    if (body.size() != 4 + key_length(body[1])) return Reply::failure(status::wrong_length);
    if (body[2] >= pad_key_count || body[3] >= pad_key_count) return Reply::failure(status::out_of_range);
    const Bytes& main = config_.main_keys[body[2]];
    if (main.empty()) return Reply::failure(status::key_missing);
    Bytes key(body.begin() + 4, body.end());
    decipher_blocks(key, main);
    config_.work_keys[body[3]] = std::move(key);
    return ok();
}

Reply PinPadModel::clear_entry(Body body) {
    if (is_next_key(body) && config_.type != 1) return next_key(false);
    const auto opening = opening_of(body);
    if (!opening) return Reply::failure(status::wrong_data);
    const Body tail = body.subspan(1 + opening->size);
    const bool selector = opening->name.front() == 'H';
    if (!(selector ? std::ranges::equal(tail, Bytes{0x0D, 0x0A}) : tail.empty()))
        return Reply::failure(status::wrong_length);
    keep_recent(openings_, opening->name);
    return config_.entries.answer_entry(config_.pin_length, wait(), [](const std::string& digits) {
        return Reply{status::ok, {digits.begin(), digits.end()}};
    });
}

Reply PinPadModel::encrypted_entry(Body body) {
    if (is_next_key(body) && config_.type != 1) return next_key(true);
    const auto opening = opening_of(body);
    if (!opening) return Reply::failure(status::wrong_data);
    const Body tail = body.subspan(1 + opening->size);  // work key, 00 00, card number
    if (tail.size() != 1 + account_field_size) return Reply::failure(status::wrong_length);
    keep_recent(openings_, opening->name);
    return pin_block(tail[0], tail.subspan(1));
}

Reply PinPadModel::entry_without_card(Body body) {
    const auto opening = opening_of(body);
    if (!opening || opening->name.front() == 'H') return Reply::failure(status::wrong_data);
    if (body.size() != 1 + opening->size + 1) return Reply::failure(status::wrong_length);
    keep_recent(openings_, opening->name);
    return pin_block(body.back(), std::array<std::uint8_t, account_field_size>{});
}

Reply PinPadModel::next_key(bool shown_as_star) {
    return config_.entries.answer_key(wait(), [shown_as_star](char key) {
        return ok(std::array{static_cast<std::uint8_t>(shown_as_star ? '*' : key)});
    });
}

Reply PinPadModel::pin_block(std::uint8_t work, Body account) {
    if (work >= pad_key_count) return Reply::failure(status::out_of_range);
    const Bytes& key = config_.work_keys[work];
    if (key.empty()) return Reply::failure(status::key_missing);
    return config_.entries.answer_entry(
        std::min<std::size_t>(config_.pin_length, longest_block_pin), wait(),
        [key, account = Bytes(account.begin(), account.end())](const std::string& digits) {
            if (digits.size() < shortest_block_pin) return Reply::failure(status::wrong_data);
            Bytes block = pin_field(digits);
            std::ranges::transform(block, account, block.begin(), std::bit_xor{});
            encipher_blocks(block, key);
            return ok(block);
        });
}

std::chrono::seconds PinPadModel::wait() const { return std::chrono::seconds(config_.timeout_seconds); }

}  // namespace qz::sim
