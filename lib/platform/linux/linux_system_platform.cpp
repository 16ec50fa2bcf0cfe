#include "platform/linux/linux_platform.h"

namespace qz::platform {

Platform& system_platform() {
    static LinuxPlatform system;
    return system;
}

}  // namespace qz::platform
