#include "sim/models/stripe/stripe_model.h"

#include "sim/core/json_values.h"
#include "sim/core/status.h"

namespace qz::sim {
namespace {

constexpr std::uint8_t stripe_class = 0xC6;
constexpr std::uint8_t set_mode = 0x00;
constexpr std::uint8_t read_tracks = 0x01;
constexpr std::size_t longest_track = 255;

}  // namespace

StripeConfig parse_stripe(const nlohmann::json& document) {
    StripeConfig config;
    if (!document.contains("stripe")) return config;
    const auto& section = json_object(document["stripe"], {"tracks", "reads_before_swipe"}, "stripe");
    if (section.contains("tracks")) {
        const auto& tracks = section["tracks"];
        if (!tracks.is_array() || tracks.size() != 3) throw ScenarioError("stripe.tracks: three tracks");
        config.tracks.emplace();
        for (std::size_t track = 0; track < 3; ++track) {
            const std::string where = "stripe.tracks[" + std::to_string(track) + "]";
            (*config.tracks)[track] = json_bytes(tracks[track], where);
            if ((*config.tracks)[track].size() > longest_track) throw ScenarioError(where + ": at most 255 bytes");
        }
    }
    if (section.contains("reads_before_swipe"))
        config.reads_before_swipe =
            static_cast<unsigned>(json_number(section["reads_before_swipe"], 1000000, "stripe.reads_before_swipe"));
    return config;
}

std::vector<Route> StripeModel::routes() const {
    return {Route{stripe_class, {set_mode, read_tracks}}.named(
        "stripe reader", {{set_mode, "reading mode"}, {read_tracks, "read tracks"}})};
}

Reply StripeModel::handle(const Command& command) {
    const auto body = command.body();
    if (command.instruction() == set_mode) {
        if (body.size() != 2) return Reply::failure(status::wrong_length);
        if (body[1] > 1) return Reply::failure(status::out_of_range);
        mode_ = body[1];
        return {};
    }
    if (body.size() != 1) return Reply::failure(status::wrong_length);
    if (!config_.tracks || reads_++ < config_.reads_before_swipe) return Reply::failure(status::entry_timed_out);
    Reply reply;
    for (const auto& track : *config_.tracks) reply.data.push_back(static_cast<std::uint8_t>(track.size()));
    for (const auto& track : *config_.tracks) reply.data.insert(reply.data.end(), track.begin(), track.end());
    return reply;
}

}  // namespace qz::sim
