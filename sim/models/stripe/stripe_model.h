// The magnetic stripe reader (class 0xC6):
//
//   C6 00 00 mode   sets the reading mode, 0 or 1
//   C6 01 00        the tracks of the card swiped: their three lengths, then the
//                   three tracks one after the other
//
// The card is swiped once `reads_before_swipe` reads have found nothing (those
// are answered with entry_timed_out, as when no card passes before the time-out);
// a reader without tracks in the scenario never sees a card.
//
//   "stripe": { "tracks": ["%B6222...^NAME^2812?", ";6222...=2812?", ""], "reads_before_swipe": 0 }
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include <nlohmann/json.hpp>

#include "sim/core/terminal.h"

namespace qz::sim {

struct StripeConfig {
    std::optional<std::array<std::vector<std::uint8_t>, 3>> tracks;
    unsigned reads_before_swipe = 0;
};

StripeConfig parse_stripe(const nlohmann::json& document);

class StripeModel final : public DeviceModel {
public:
    explicit StripeModel(StripeConfig config) : config_(std::move(config)) {}

    std::vector<Route> routes() const override;
    Reply handle(const Command& command) override;

    std::optional<std::uint8_t> mode() const { return mode_; }
    // A card swiped by hand: the next read finds these tracks.
    void swipe(const std::array<std::vector<std::uint8_t>, 3>& tracks) {
        config_.tracks = tracks;
        config_.reads_before_swipe = 0;
    }
    const std::optional<std::array<std::vector<std::uint8_t>, 3>>& tracks() const { return config_.tracks; }

private:
    StripeConfig config_;
    std::optional<std::uint8_t> mode_;
    unsigned reads_ = 0;
};

}  // namespace qz::sim
