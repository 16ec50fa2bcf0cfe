#include "sim/models/scanner/scanner_loader.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string_view>

#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::size_t switch_size = 10;
constexpr std::uint8_t poll = 0x21;
constexpr std::uint8_t package_parameter = 0x02;
constexpr std::size_t firmware_bytes = 256;
constexpr std::size_t package_size = firmware_bytes + 2;
constexpr std::string_view leave = "#exit#";
constexpr std::uint16_t leave_length_field = 8;

const std::array<std::vector<std::uint8_t>, 5> preparing_steps{{
    {0x34}, {0x03}, {'#', 'v', 'e', 'r', '#'}, {0x01}, {0x00, 0x23, 0xB5, 0x00},
}};
constexpr std::size_t version_step = 2;

Reply answer(char mark) { return {status::ok, {0x02, static_cast<std::uint8_t>(mark), 0x03}}; }

std::uint16_t crc16(std::span<const std::uint8_t> bytes) {
    std::uint16_t crc = 0;
    for (std::uint8_t byte : bytes) {
        crc ^= static_cast<std::uint16_t>(byte << 8);
        for (int bit = 0; bit < 8; ++bit)
            crc = static_cast<std::uint16_t>((crc & 0x8000) ? (crc << 1) ^ 0x1021 : crc << 1);
    }
    return crc;
}

bool is_switch(std::span<const std::uint8_t> content) {
    if (content.size() != switch_size) return false;
    const unsigned sum = std::accumulate(content.begin(), content.begin() + 8, 0u);
    return static_cast<std::uint16_t>((content[8] << 8) | content[9]) == static_cast<std::uint16_t>(0x10000 - sum);
}

}  // namespace

Reply ScannerLoader::handle(std::uint8_t parameter, std::span<const std::uint8_t> message) {
    if (silent_) return Reply::none();
    if (message.size() < 2) return Reply::failure(status::wrong_length);
    const std::size_t length_field = (std::size_t{message[0]} << 8) | message[1];
    const auto content = message.subspan(2);
    const bool leaving = std::ranges::equal(content, leave);
    if (length_field != (leaving ? leave_length_field : content.size())) return Reply::failure(status::wrong_length);

    if (is_switch(content)) {
        running_ = true;
        steps_done_ = 0;
        received_.clear();
        return {};
    }
    if (!running_) return Reply::failure(status::instruction_unknown);
    if (parameter == package_parameter) return take_package(content);
    if (content.size() == 1 && content[0] == poll) return answer('$');
    if (leaving) {
        running_ = false;
        if (!received_.empty()) {
            firmware_ = std::move(received_);
            received_.clear();
            config_.version = config_.new_version;
        }
        return {};
    }
    if (steps_done_ < preparing_steps.size() && std::ranges::equal(content, preparing_steps[steps_done_])) {
        if (steps_done_++ != version_step) return answer('$');
        std::vector<std::uint8_t> text(config_.loader_version.size() + 2, 0x02);
        std::copy(config_.loader_version.begin(), config_.loader_version.end(), text.begin() + 1);
        text.back() = 0x03;
        return {status::ok, text};
    }
    return answer('!');
}

Reply ScannerLoader::take_package(std::span<const std::uint8_t> content) {
    if (steps_done_ != preparing_steps.size() || content.size() != package_size) return answer('!');
    const auto data = content.first(firmware_bytes);
    const std::uint16_t sent = static_cast<std::uint16_t>((content[firmware_bytes] << 8) | content[firmware_bytes + 1]);
    const unsigned number = ++packages_;
    if (config_.silent_after_package && number > *config_.silent_after_package) {
        silent_ = true;
        return Reply::none();
    }
    if (crc16(data) != sent || config_.refuse_package == number) return answer('!');
    received_.insert(received_.end(), data.begin(), data.end());
    return answer('$');
}

}  // namespace qz::sim
