#include "platform/platform.h"

#include "platform/linux/linux_platform.h"

namespace qz::platform {
namespace {
Platform* installed = nullptr;
}

Platform& current() {
    if (installed != nullptr) return *installed;
    static LinuxPlatform system;
    return system;
}

void install(Platform* platform) { installed = platform; }

}  // namespace qz::platform
