#include "sim/core/frame_codec.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <stdexcept>

namespace qz::sim {

std::uint8_t bcc(std::span<const std::uint8_t> bytes) {
    return std::accumulate(bytes.begin(), bytes.end(), std::uint8_t{0}, std::bit_xor<std::uint8_t>());
}

std::vector<std::uint8_t> encode_frame(std::span<const std::uint8_t> payload) {
    if (payload.size() > max_frame_length - frame_overhead) throw std::length_error("payload too long for a frame");
    std::vector<std::uint8_t> frame;
    frame.reserve(payload.size() + frame_overhead);
    frame.push_back(stx);
    frame.push_back(static_cast<std::uint8_t>(payload.size() >> 8));
    frame.push_back(static_cast<std::uint8_t>(payload.size()));
    frame.insert(frame.end(), payload.begin(), payload.end());
    frame.push_back(bcc(payload));
    frame.push_back(etx);
    return frame;
}

std::vector<std::uint8_t> reply_payload(std::uint16_t status, std::span<const std::uint8_t> data) {
    std::vector<std::uint8_t> payload(3 + data.size());
    payload[0] = static_cast<std::uint8_t>(status >> 8);
    payload[1] = static_cast<std::uint8_t>(status);
    std::copy(data.begin(), data.end(), payload.begin() + 3);
    return payload;
}

std::optional<std::span<const std::uint8_t>> frame_payload(std::span<const std::uint8_t> frame) {
    if (frame.size() < frame_overhead || frame.front() != stx || frame.back() != etx) return std::nullopt;
    const auto payload_and_bcc = frame.subspan(header_length, frame.size() - frame_overhead + 1);
    if (bcc(payload_and_bcc) != 0) return std::nullopt;
    return payload_and_bcc.first(payload_and_bcc.size() - 1);
}

std::size_t FrameCollector::wanted() const {
    if (bytes_.size() < header_length) return header_length;
    return ((std::size_t{bytes_[1]} << 8) | bytes_[2]) + frame_overhead;
}

bool FrameCollector::complete() const { return bytes_.size() >= header_length && bytes_.size() == wanted(); }

std::size_t FrameCollector::feed(std::span<const std::uint8_t> bytes) {
    std::size_t taken = 0;
    if (!started()) {
        const auto start = std::find(bytes.begin(), bytes.end(), stx);
        taken = static_cast<std::size_t>(start - bytes.begin());
    }
    while (taken < bytes.size() && !complete()) {
        const std::size_t count = std::min(wanted() - bytes_.size(), bytes.size() - taken);
        bytes_.insert(bytes_.end(), bytes.begin() + static_cast<std::ptrdiff_t>(taken),
                      bytes.begin() + static_cast<std::ptrdiff_t>(taken + count));
        taken += count;
    }
    return taken;
}

}  // namespace qz::sim
