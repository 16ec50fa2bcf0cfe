// The terminal's serial side: request bytes in, frames found by STX and LEN,
// reply bytes out with STX first.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>

#include "sim/core/frame_codec.h"
#include "sim/core/responder.h"

namespace qz::sim {

class SerialEndpoint {
public:
    explicit SerialEndpoint(Responder& terminal) : terminal_(terminal) {}

    // Takes received bytes; noise before an STX is dropped, and each whole
    // frame is answered at once.
    void receive(std::span<const std::uint8_t> bytes);

    // The next reply byte to send, if any (a held reply once released).
    std::optional<std::uint8_t> transmit();
    // A reply is held for a person: worth asking transmit again soon.
    bool holding() const { return terminal_.holding(); }
    std::size_t pending() const { return output_.size(); }
    // A request has begun and is not yet whole.
    bool receiving() const { return request_.started(); }

    // Drops a half-received request and unsent reply bytes.
    void purge();

private:
    Responder& terminal_;
    FrameCollector request_;
    std::deque<std::uint8_t> output_;
};

}  // namespace qz::sim
