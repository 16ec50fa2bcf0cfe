// The short read-only walk of a bank card: payment directory, first application,
// PDOL answer, GET PROCESSING OPTIONS, the records that the AFL names.
#pragma once

#include <cstdint>
#include <span>

#include "bank/card_path.h"

namespace qz::bank {

inline constexpr int walk_failed = -19;       // a SELECT, the directory record or GPO failed
inline constexpr int walk_missing_data = -21;  // a needed tag is missing, or the records ran out

// Takes what it needs from the replies of the walk.
class WalkReader {
public:
    virtual ~WalkReader() = default;
    // The GET PROCESSING OPTIONS reply, on a path that reads it; true ends the walk with 0.
    virtual bool take_processing_options(std::span<const std::uint8_t> reply) = 0;
    // A record that the card gave with 9000; true ends the walk with 0.
    virtual bool take_record(std::span<const std::uint8_t> reply) = 0;
};

// Opens the session and walks the card up to the point where `reader` has what it
// needs. Results: 0; the activation's status (nothing else sent); walk_failed;
// walk_missing_data. The session stays open except when the contact path finds an
// empty tag 88, when the records are used up, and after an exception.
int walk_card(CardPath& path, WalkReader& reader);

}  // namespace qz::bank
