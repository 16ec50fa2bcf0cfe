#include "link/frame.h"

#include <algorithm>

#include "link/status.h"

namespace qz::link {

std::uint8_t frame_bcc(std::span<const std::uint8_t> bytes) {
    std::uint8_t bcc = 0;
    for (std::uint8_t byte : bytes) bcc ^= byte;
    return bcc;
}

int frame_check(std::span<const std::uint8_t> bytes) { return frame_bcc(bytes) == 0 ? 0 : status_bad_bcc; }

void build_frame(std::span<const std::uint8_t> payload, std::span<std::uint8_t> frame) {
    const std::size_t n = payload.size();
    frame[0] = stx;
    frame[1] = static_cast<std::uint8_t>(n >> 8);
    frame[2] = static_cast<std::uint8_t>(n);
    std::copy(payload.begin(), payload.end(), frame.begin() + 3);
    frame[3 + n] = frame_bcc(payload);
    frame[4 + n] = etx;
}

}  // namespace qz::link
