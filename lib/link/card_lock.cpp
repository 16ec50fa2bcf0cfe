#include "link/card_lock.h"

namespace qz::link {

std::recursive_mutex& card_lock() {
    static std::recursive_mutex lock;
    return lock;
}

}  // namespace qz::link
