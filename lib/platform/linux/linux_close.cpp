#include <unistd.h>

#include "platform/linux/linux_platform.h"

namespace qz::platform {

bool LinuxPlatform::close(int handle) {
    if (!handles_.remove(handle)) return false;
    {
        std::lock_guard guard(input_mutex_);
        inputs_.erase(handle);
    }
    return ::close(handle) == 0;
}

}  // namespace qz::platform
