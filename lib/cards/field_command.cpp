#include "cards/field_command.h"

#include <algorithm>

#include "link/command.h"

namespace qz::cards {
namespace {

link::Payload payload_of(const FieldCommand& command, const Arguments& arguments) {
    link::Payload payload{command.class_byte, command.instruction};
    if (command.parameter) payload.add(*command.parameter);
    return payload.add(arguments.bytes());
}

}  // namespace

int run_for_reply(int icdev, const FieldCommand& command, const Arguments& arguments,
                  std::vector<std::uint8_t>& reply) {
    if (arguments.refused()) return command.refused;
    reply.assign(command.reply_room, 0);
    int length = 0;
    const int result = link::dev_transact(icdev, payload_of(command, arguments).bytes(), length, reply);
    reply.resize(result == 0 ? static_cast<std::size_t>(length) : 0);
    return result;
}

int run(int icdev, const FieldCommand& command, const Arguments& arguments, std::uint8_t* out) {
    const ReplyUse& use = command.use;
    if (use.kind != ReplyUse::nothing && out == nullptr) return command.refused;
    std::vector<std::uint8_t> reply;
    const int result = run_for_reply(icdev, command, arguments, reply);
    if (result != 0) return result;
    if (use.kind == ReplyUse::nothing) return 0;
    if (use.kind == ReplyUse::all) {
        std::ranges::copy(reply, out);
        return 0;
    }
    if (reply.size() < use.offset + use.count) return link::status_reply_too_short;
    const auto first = reply.begin() + static_cast<std::ptrdiff_t>(use.offset);
    const auto last = first + static_cast<std::ptrdiff_t>(use.count);
    if (use.kind == ReplyUse::reversed) std::reverse_copy(first, last, out);
    else std::copy(first, last, out);
    return 0;
}

}  // namespace qz::cards
