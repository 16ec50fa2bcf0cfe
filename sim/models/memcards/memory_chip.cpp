#include "sim/models/memcards/memory_chip.h"

#include <algorithm>

#include "sim/core/status.h"

namespace qz::sim {

std::uint16_t GuardCode::present(std::span<const std::uint8_t> attempt) {
    if (tries_left_ == 0) return status::code_blocked;
    if (!std::ranges::equal(attempt, value_)) {
        open_ = false;
        --tries_left_;
        return static_cast<std::uint16_t>(status::code_wrong | tries_left_);
    }
    tries_left_ = tries_;
    open_ = true;
    return status::ok;
}

std::uint16_t GuardCode::change(std::span<const std::uint8_t> value) {
    if (!open_) return status::code_required;
    value_.assign(value.begin(), value.end());
    return status::ok;
}

Reply ok_reply(std::vector<std::uint8_t> data) { return {status::ok, std::move(data)}; }

}  // namespace qz::sim
