// The library's one lock. It surrounds only the card state query and the
// opening of a contactless card; it is re-entrant.
#pragma once

#include <mutex>

namespace qz::link {

std::recursive_mutex& card_lock();

}  // namespace qz::link
