#include "platform/platform.h"

namespace qz::platform {
namespace {
Platform* installed = nullptr;
}

void Platform::sleep_until_us(std::uint64_t deadline_us) {
    const std::uint64_t now = tick_us();
    if (deadline_us > now) sleep_ms(static_cast<std::uint32_t>((deadline_us - now + 999) / 1000));
}

Platform& current() { return installed != nullptr ? *installed : system_platform(); }

void install(Platform* platform) { installed = platform; }

}  // namespace qz::platform
