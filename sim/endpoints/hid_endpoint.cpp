#include "sim/endpoints/hid_endpoint.h"

#include <algorithm>
#include <stdexcept>

#include "sim/core/held_reply.h"

namespace qz::sim {

HidEndpoint::HidEndpoint(Responder& terminal, std::uint16_t report_length)
    : terminal_(terminal), report_length_(report_length) {
    if (report_length < min_report_length || report_length > max_report_length)
        throw std::invalid_argument("feature report length outside 255..300");
}

bool HidEndpoint::set_feature(std::span<const std::uint8_t> report) {
    if (report.size() != report_length_ || report[0] != feature_report_id) return false;
    const auto piece = report.subspan(1, hid_piece_length);
    if (!request_.started()) {
        if (piece[0] != stx) return true;
        // A new request: whatever is left of the last reply is dropped.
        reply_.clear();
        sent_ = 0;
    }
    request_.feed(piece);
    if (request_.complete()) {
        reply_ = terminal_.answer(request_.frame());
        request_.reset();
    }
    return true;
}

std::optional<std::size_t> HidEndpoint::get_feature(std::span<std::uint8_t> report) {
    if (!reply_pending() && terminal_.holding()) {
        // Busy until the held reply is released; then it goes out like any other.
        if (auto released = terminal_.release(HoldClock::now())) {
            reply_ = std::move(*released);
            sent_ = 0;
        }
    }
    if (report.size() < report_length_ || report[0] != feature_report_id || !reply_pending()) return std::nullopt;
    const std::size_t count = std::min(hid_piece_length, reply_.size() - sent_);
    const auto out = report.first(report_length_);
    std::fill(out.begin() + 1, out.end(), 0);
    std::copy_n(reply_.begin() + static_cast<std::ptrdiff_t>(sent_), count, out.begin() + 1);
    sent_ += count;
    return out.size();
}

}  // namespace qz::sim
