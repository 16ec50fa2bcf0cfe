#include "platform/paths.h"

#include <cstdlib>

namespace qz::platform {
namespace {

std::filesystem::path from_environment(const char* variable, const char* fallback) {
    const char* value = std::getenv(variable);
    return (value != nullptr && *value != '\0') ? value : fallback;
}

}  // namespace

std::filesystem::path hidraw_dir() { return from_environment("QZ_32_HIDRAW_DIR", "/dev"); }
std::filesystem::path ports_dir() { return from_environment("QZ_32_PORTS_DIR", "/etc/qz_32/ports"); }
std::filesystem::path log_root() { return from_environment("QZ_32_LOG_ROOT", "/var/log/QZlog"); }

}  // namespace qz::platform
