#include "cards/memory_command.h"

#include <algorithm>
#include <array>

#include "link/command.h"
#include "link/status.h"

namespace qz::cards {
namespace {

// The largest reply area any memory card command has (the long AT88SC1604 reads).
constexpr std::size_t largest_reply_area = 1600;

}  // namespace

int send_memory_command(int icdev, const MemoryCommand& command, const MemoryCall& call) {
    const std::size_t data_length = command.key_length + call.data_length;
    if (data_length != 0 && call.data == nullptr) return link::status_bad_argument;
    if (command.yield != Yield::nothing && call.out == nullptr) return link::status_bad_argument;

    link::Payload payload{command.card_class, command.instruction, 0x00};
    payload.add(call.arguments);
    if (data_length != 0) payload.add(std::span(call.data, data_length));

    std::array<std::uint8_t, largest_reply_area> area{};
    int length = 0;
    const int result = link::dev_transact(icdev, payload.bytes(), length,
                                    std::span(area).first(std::min(command.reply_capacity, area.size())));
    const auto reply = std::span(area).first(result == 0 ? static_cast<std::size_t>(std::max(length, 0)) : 0);
    switch (command.yield) {
        case Yield::nothing:
            break;
        case Yield::reply:
            std::ranges::copy(reply, call.out);
            break;
        case Yield::first_byte:
            if (result == 0 && reply.empty()) return link::status_reply_too_short;
            if (result == 0) *call.out = reply.front();
            break;
    }
    if (result == 0 && call.out_length != nullptr) *call.out_length = static_cast<unsigned char>(reply.size());
    return result;
}

}  // namespace qz::cards
