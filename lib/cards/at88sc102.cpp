// The AT88SC102 zone transfers and the erase with read-back.
#include "cards/at88sc102.h"

#include <algorithm>
#include <array>

#include "link/status.h"

namespace qz::cards::at88sc102 {

std::optional<MemoryCommand> SelectedCommand::pick(unsigned sel) const {
    if (sel < 1 || sel > count) return std::nullopt;
    return command(static_cast<std::uint8_t>(first_instruction + sel - 1));
}

int zone_transfer(int icdev, const std::optional<MemoryCommand>& command, unsigned offset, unsigned length,
                  const unsigned char* data, unsigned char* out) {
    if (!command || offset >= zone_size || length < 1 || length > zone_size) return link::status_bad_argument;
    const std::array<std::uint8_t, 2> arguments{static_cast<std::uint8_t>(offset), static_cast<std::uint8_t>(length)};
    return send_memory_command(
        icdev, *command,
        {.arguments = arguments, .data = data, .data_length = command->yield == Yield::nothing ? length : 0, .out = out});
}

int erase_zone(int icdev, const std::optional<MemoryCommand>& erase, const MemoryCommand& read) {
    if (!erase) return link::status_bad_argument;
    int result = send_memory_command(icdev, *erase, {});
    if (result != 0) return result;
    std::array<unsigned char, 512> read_back{};
    result = zone_transfer(icdev, read, 0, zone_size, nullptr, read_back.data());
    if (result != 0) return result;
    const auto zone = std::span(read_back).first(zone_size);
    return std::ranges::all_of(zone, [](unsigned char byte) { return byte == erased_byte; }) ? 0 : status_not_erased;
}

}  // namespace qz::cards::at88sc102
