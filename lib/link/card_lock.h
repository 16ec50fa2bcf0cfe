// The library's one lock, re-entrant, created by the load hook. Exports take it
// through ExportLock.
#pragma once

#include <mutex>

namespace qz::link {

std::recursive_mutex& card_lock();

}  // namespace qz::link
