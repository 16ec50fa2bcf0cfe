#include "platform/platform.h"

namespace qz::platform {
namespace {
Platform* installed = nullptr;
}

Platform& current() { return installed != nullptr ? *installed : system_platform(); }

void install(Platform* platform) { installed = platform; }

}  // namespace qz::platform
