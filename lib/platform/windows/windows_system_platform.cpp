#include "platform/windows/windows_platform.h"

namespace qz::platform {

Platform& system_platform() {
    static WindowsPlatform system;
    return system;
}

int WindowsPlatform::adopt(HANDLE system_handle, HandleInfo info) {
    const long number = HandleToLong(system_handle);
    if (number <= 1) {
        CloseHandle(system_handle);
        return -1;
    }
    handles_.add(static_cast<int>(number), info);
    return static_cast<int>(number);
}

bool WindowsPlatform::close(int handle) {
    if (!handles_.remove(handle)) return false;
    return CloseHandle(system_handle(handle)) != FALSE;
}

}  // namespace qz::platform
