#include "platform/handle_registry.h"

namespace qz::platform {

void HandleRegistry::add(int handle, HandleInfo info) {
    std::lock_guard guard(mutex_);
    handles_[handle] = info;
}

std::optional<HandleInfo> HandleRegistry::find(int handle) const {
    std::lock_guard guard(mutex_);
    const auto found = handles_.find(handle);
    if (found == handles_.end()) return std::nullopt;
    return found->second;
}

bool HandleRegistry::is(int handle, HandleKind kind) const {
    const auto info = find(handle);
    return info && info->kind == kind;
}

bool HandleRegistry::remove(int handle) {
    std::lock_guard guard(mutex_);
    return handles_.erase(handle) == 1;
}

}  // namespace qz::platform
