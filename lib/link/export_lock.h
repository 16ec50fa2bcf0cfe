// Held by every export that talks to the terminal, for the whole call: a call
// from another thread waits its turn, and an export that calls another export
// keeps the lock it already holds. It is the library's one recursive lock.
#pragma once

#include <mutex>

#include "link/card_lock.h"

namespace qz::link {

class ExportLock {
public:
    ExportLock() : guard_(card_lock()) {}

private:
    std::lock_guard<std::recursive_mutex> guard_;
};

}  // namespace qz::link
