#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/linux/linux_platform.h"

namespace qz::platform {

bool LinuxPlatform::close(int handle) {
    const auto info = handles_.find(handle);
    if (!info || !handles_.remove(handle)) return false;
    // Exclusive use ends with the handle. The mark belongs to the line, not to
    // the descriptor: while anything else holds the line open (the far side of a
    // pseudo-terminal does) it would turn away every later open but root's.
    if (info->kind == HandleKind::serial) ::ioctl(handle, TIOCNXCL);
    {
        std::lock_guard guard(input_mutex_);
        inputs_.erase(handle);
    }
    return ::close(handle) == 0;
}

}  // namespace qz::platform
