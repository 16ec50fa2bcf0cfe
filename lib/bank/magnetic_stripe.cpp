// The magnetic stripe reader: its mode, and the three tracks of the last swipe.
// Waiting for a swipe and decoding the tracks are the terminal's work.
#include <algorithm>
#include <array>

#include "link/command.h"
#include "link/export_lock.h"
#include "qz_32.h"

namespace {

constexpr std::uint8_t stripe_class = 0xC6;
constexpr std::uint8_t set_mode = 0x00;
constexpr std::uint8_t read_tracks = 0x01;
constexpr std::size_t track_count = 3;

}  // namespace

QZ_32_API int QZ_32_CALL setmagic_mode(int icdev, unsigned char mode) {
    const qz::link::ExportLock lock;
    if (mode > 1) return qz::link::status_bad_argument;
    qz::link::Reply<512> reply;
    return qz::link::transact(icdev, qz::link::Payload{stripe_class, set_mode, 0x00, mode}, reply);
}

// Reply data: the three track lengths, then the tracks one after the other.
QZ_32_API int QZ_32_CALL readmagic_data(int icdev, unsigned char* track1_length, unsigned char* track1,
                             unsigned char* track2_length, unsigned char* track2, unsigned char* track3_length,
                             unsigned char* track3) {
    const qz::link::ExportLock lock;
    const std::array<unsigned char*, track_count> lengths{track1_length, track2_length, track3_length};
    const std::array<unsigned char*, track_count> tracks{track1, track2, track3};
    if (std::ranges::count(lengths, nullptr) + std::ranges::count(tracks, nullptr) != 0)
        return qz::link::status_bad_argument;
    qz::link::Reply<512> reply;
    int result = reply.require(qz::link::transact(icdev, qz::link::Payload{stripe_class, read_tracks, 0x00}, reply),
                               track_count);
    if (result != 0) return result;
    const auto data = reply.data();
    std::size_t total = track_count;
    for (std::size_t track = 0; track < track_count; ++track) total += data[track];
    if ((result = reply.require(result, total)) != 0) return result;

    std::size_t at = track_count;
    for (std::size_t track = 0; track < track_count; ++track) {
        *lengths[track] = data[track];
        std::copy_n(data.begin() + static_cast<std::ptrdiff_t>(at), data[track], tracks[track]);
        at += data[track];
    }
    return 0;
}
