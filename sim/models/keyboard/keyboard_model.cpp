#include "sim/models/keyboard/keyboard_model.h"

#include <algorithm>
#include <string_view>

#include "sim/core/json_values.h"
#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t pass_class = 0xC5;
constexpr std::uint8_t pass_instruction = 0x0F;
constexpr std::uint8_t esc = 0x1B;
constexpr std::uint8_t scanner_mark = 'H';
constexpr std::uint8_t stx = 0x02;
constexpr std::uint8_t etx = 0x03;
constexpr std::string_view version_order = "KTLVN";
constexpr std::string_view loader_order = "UPDATE";
constexpr std::uint8_t package_kind = 0xD0;
constexpr std::size_t head_length = 4;
// Inner statuses of the loader.
constexpr std::uint16_t flash_failed = 0x6581;

bool is_order(std::span<const std::uint8_t> message, std::string_view letters) {
    return message.size() == letters.size() + 1 && message[0] == esc &&
           std::equal(letters.begin(), letters.end(), message.begin() + 1);
}

std::uint8_t xor_of(std::span<const std::uint8_t> bytes) {
    std::uint8_t sum = 0;
    for (std::uint8_t byte : bytes) sum ^= byte;
    return sum;
}

std::vector<std::uint8_t> frame_of(const std::vector<std::uint8_t>& payload) {
    std::vector<std::uint8_t> frame(payload.size() + 5);
    frame[0] = stx;
    frame[1] = static_cast<std::uint8_t>(payload.size() >> 8);
    frame[2] = static_cast<std::uint8_t>(payload.size());
    std::copy(payload.begin(), payload.end(), frame.begin() + 3);
    frame.resize(payload.size() + 3);
    frame.push_back(xor_of(payload));
    frame.push_back(etx);
    return frame;
}

// The payload of a whole, undamaged inner frame.
std::optional<std::span<const std::uint8_t>> inner_payload(std::span<const std::uint8_t> frame) {
    if (frame.size() < 5 || frame[0] != stx || frame.back() != etx) return std::nullopt;
    const std::size_t length = (std::size_t{frame[1]} << 8) | frame[2];
    if (frame.size() != length + 5) return std::nullopt;
    const auto payload = frame.subspan(3, length);
    if (xor_of(payload) != frame[3 + length]) return std::nullopt;
    return payload;
}

Reply package_answer(std::uint16_t inner_status, std::uint8_t number) {
    return {status::ok,
            frame_of({static_cast<std::uint8_t>(inner_status >> 8), static_cast<std::uint8_t>(inner_status), number})};
}

}  // namespace

KeyboardConfig parse_keyboard(const nlohmann::json& document) {
    KeyboardConfig config;
    if (!document.contains("keyboard")) return config;
    const auto& section =
        json_object(document["keyboard"],
                    {"version", "loader_version", "new_version", "in_loader", "capacity", "refuse_package", "refusals",
                     "silent_after_package"},
                    "keyboard");
    const auto text = [&](const char* key, std::string& target) {
        if (!section.contains(key)) return;
        const auto bytes = json_bytes(section[key], std::string("keyboard.") + key);
        target.assign(bytes.begin(), bytes.end());
    };
    const auto number = [&](const char* key, std::uint64_t max) -> std::optional<std::uint64_t> {
        if (!section.contains(key)) return std::nullopt;
        return json_number(section[key], max, std::string("keyboard.") + key);
    };
    text("version", config.version);
    text("loader_version", config.loader_version);
    text("new_version", config.new_version);
    if (section.contains("in_loader")) config.in_loader = section["in_loader"].get<bool>();
    if (auto value = number("capacity", 0xFFFFFF)) config.capacity = static_cast<std::uint32_t>(*value);
    if (auto value = number("refuse_package", 0xFFFFFF)) config.refuse_package = static_cast<unsigned>(*value);
    if (auto value = number("refusals", 1000)) config.refusals = static_cast<unsigned>(*value);
    if (auto value = number("silent_after_package", 0xFFFFFF)) config.silent_after_package = static_cast<unsigned>(*value);
    return config;
}

std::vector<Route> KeyboardModel::routes() const {
    return {Route{pass_class, {pass_instruction}, true}.named("keyboard", {{pass_instruction, "keyboard message"}})};
}

bool KeyboardModel::takes(const Command& command) const {
    const auto body = command.body();
    return body.size() >= 2 && !(body.size() >= 3 && body[1] == esc && body[2] == scanner_mark);
}

Reply KeyboardModel::handle(const Command& command) {
    if (silent_) return Reply::none();
    const auto body = command.body();
    if (body[0] != 0x00) return Reply::failure(status::out_of_range);
    const auto message = body.subspan(1);
    return config_.in_loader ? loader(message) : firmware(message);
}

Reply KeyboardModel::firmware(std::span<const std::uint8_t> message) {
    if (is_order(message, version_order)) {
        std::vector<std::uint8_t> data(config_.version.size() + 2, stx);
        std::copy(config_.version.begin(), config_.version.end(), data.begin() + 1);
        data.back() = etx;
        return {status::ok, data};
    }
    if (is_order(message, loader_order)) {
        config_.in_loader = true;
        return {};
    }
    return Reply::failure(status::instruction_unknown);
}

Reply KeyboardModel::loader(std::span<const std::uint8_t> message) {
    if (is_order(message, loader_order)) return {};
    const auto payload = inner_payload(message);
    if (!payload || payload->size() < 2) return Reply::failure(status::instruction_unknown);
    if ((*payload)[0] == 0x00 && (*payload)[1] == 0x01) {
        std::vector<std::uint8_t> answer{0x00, 0x01, 0x00};
        answer.insert(answer.end(), config_.loader_version.begin(), config_.loader_version.end());
        answer.insert(answer.end(), {0x00, 0x00, static_cast<std::uint8_t>(config_.capacity >> 16),
                                     static_cast<std::uint8_t>(config_.capacity >> 8),
                                     static_cast<std::uint8_t>(config_.capacity)});
        return {status::ok, frame_of(answer)};
    }
    if ((*payload)[0] != 0x00 || (*payload)[1] != package_kind || payload->size() < 3)
        return package_answer(status::wrong_data, 0);
    const std::uint8_t number = (*payload)[2];
    const std::uint16_t inner_status = take_package(*payload);
    if (config_.silent_after_package && packages_seen_.size() > *config_.silent_after_package) silent_ = true;
    return package_answer(inner_status, number);
}

// Keeps the package if it is the one expected: the inner status of the answer.
std::uint16_t KeyboardModel::take_package(std::span<const std::uint8_t> package) {
    const std::uint8_t number = package[2];
    const auto data = package.subspan(3);
    packages_seen_.push_back(number);
    // Number 0 is the head, unless the image has reached package 256, 512, ...
    if (number == 0 && (!announced_ || (next_package_ & 0xFF) != 0)) {
        if (data.size() != head_length) return status::wrong_length;
        const std::uint32_t length = (std::uint32_t{data[0]} << 24) | (std::uint32_t{data[1]} << 16) |
                                     (std::uint32_t{data[2]} << 8) | data[3];
        if (length > config_.capacity) return status::wrong_length;
        announced_ = length;
        image_.clear();
        next_package_ = 1;
    } else {
        if (!announced_ || number != (next_package_ & 0xFF)) return status::wrong_data;
        if (config_.refuse_package == next_package_ && config_.refusals > 0) {
            --config_.refusals;
            return flash_failed;
        }
        if (image_.size() + data.size() > *announced_) return status::wrong_length;
        image_.insert(image_.end(), data.begin(), data.end());
        ++next_package_;
    }
    if (image_.size() == *announced_) {
        // The image is whole: it becomes the firmware, which starts.
        firmware_image_ = std::move(image_);
        image_.clear();
        announced_.reset();
        config_.version = config_.new_version;
        config_.in_loader = false;
    }
    return status::ok;
}

}  // namespace qz::sim
