#include "platform/paths.h"

namespace qz::platform {

std::filesystem::path default_hidraw_dir() { return "/dev"; }
std::filesystem::path default_ports_dir() { return "/etc/qz_32/ports"; }
std::filesystem::path default_log_root() { return "/var/log/QZlog"; }

}  // namespace qz::platform
