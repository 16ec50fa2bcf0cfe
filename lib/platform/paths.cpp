#include "platform/paths.h"

#include <cstdlib>

namespace qz::platform {
namespace {

std::filesystem::path from_environment(const char* variable, std::filesystem::path fallback) {
    const char* value = std::getenv(variable);
    return (value != nullptr && *value != '\0') ? std::filesystem::path(value) : fallback;
}

}  // namespace

std::filesystem::path hidraw_dir() { return from_environment("QZ_32_HIDRAW_DIR", default_hidraw_dir()); }
std::filesystem::path ports_dir() { return from_environment("QZ_32_PORTS_DIR", default_ports_dir()); }
std::filesystem::path log_root() { return from_environment("QZ_32_LOG_ROOT", default_log_root()); }

}  // namespace qz::platform
