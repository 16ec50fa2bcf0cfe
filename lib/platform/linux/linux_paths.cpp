#include "platform/paths.h"

namespace qz::platform {

// Hidden means a name that starts with a dot; read-only a folder its owner may not write.
bool is_plain_folder(const std::filesystem::path& folder) {
    std::error_code error;
    const auto status = std::filesystem::symlink_status(folder, error);
    if (error || !std::filesystem::is_directory(status)) return false;
    if (folder.filename().string().starts_with('.')) return false;
    return (status.permissions() & std::filesystem::perms::owner_write) != std::filesystem::perms::none;
}

std::filesystem::path default_hidraw_dir() { return "/dev"; }
std::filesystem::path default_ports_dir() { return "/etc/qz_32/ports"; }
std::filesystem::path default_log_root() { return "/var/log/QZlog"; }

}  // namespace qz::platform
