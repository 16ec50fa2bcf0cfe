#include "sim/endpoints/serial_endpoint.h"

#include "sim/core/held_reply.h"

namespace qz::sim {

void SerialEndpoint::receive(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        bytes = bytes.subspan(request_.feed(bytes));
        if (!request_.complete()) continue;
        const auto reply = terminal_.answer(request_.frame());
        output_.insert(output_.end(), reply.begin(), reply.end());
        request_.reset();
    }
}

std::optional<std::uint8_t> SerialEndpoint::transmit() {
    if (output_.empty() && terminal_.holding()) {
        if (const auto released = terminal_.release(HoldClock::now()))
            output_.insert(output_.end(), released->begin(), released->end());
    }
    if (output_.empty()) return std::nullopt;
    const std::uint8_t byte = output_.front();
    output_.pop_front();
    return byte;
}

void SerialEndpoint::purge() {
    request_.reset();
    output_.clear();
}

}  // namespace qz::sim
