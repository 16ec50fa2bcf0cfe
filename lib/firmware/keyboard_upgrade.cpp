#include "firmware/keyboard_upgrade.h"

#include <array>

#include "firmware/intel_hex.h"
#include "firmware/keyboard_link.h"
#include "link/command.h"
#include "link/log.h"
#include "platform/platform.h"

namespace qz::firmware {
namespace {

// The head package (number 0) carries the image's length, big-endian, under
// longer time-outs while the loader prepares its flash.
void send_head(int icdev, std::size_t image_length) {
    const auto length = static_cast<std::uint32_t>(image_length);
    const std::array<std::uint8_t, 4> head{static_cast<std::uint8_t>(length >> 24),
                                           static_cast<std::uint8_t>(length >> 16),
                                           static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)};
    const link::TimeoutsForCommand timeouts(10000, 10);
    download_iap(icdev, 0, head);
}

void send_packages(int icdev, std::span<const std::uint8_t> image) {
    const std::size_t count = (image.size() + keyboard_package_size - 1) / keyboard_package_size;
    for (std::size_t index = 0; index < count; ++index) {
        platform::current().sleep_ms(wait_before_package_ms);
        const auto data = image.subspan(index * keyboard_package_size,
                                        std::min(keyboard_package_size, image.size() - index * keyboard_package_size));
        const int result = download_iap(icdev, static_cast<unsigned>(index + 1), data);
        if (result != 0)
            link::write_log(link::log_format("download_iap error. currPackage : %04d,st : 0x%02x.",
                                             static_cast<int>(index), static_cast<unsigned>(result)));
    }
}

// 0 once the keyboard reports its loader; else why it doesn't.
int reach_loader(int icdev) {
    VersionText version;
    if (keyboard_version(icdev, version) != 0) {
        version.clear();
        if (const int result = iap_version(icdev, version); result != 0) return result;
    }
    if (is_iap_version(version)) return 0;
    platform::current().sleep_ms(wait_before_loader_ms);
    enter_iap(icdev);
    platform::current().sleep_ms(wait_after_loader_ms);
    version.clear();
    iap_version(icdev, version);
    return is_iap_version(version) ? 0 : status_no_loader;
}

}  // namespace

int upgrade_keyboard(int icdev, const std::filesystem::path& file) {
    const link::TimeoutsForCommand timeouts(5000, 0);
    if (const int result = reach_loader(icdev); result != 0) return result;
    {
        const HexImage image = read_hex_image(file);
        if (image.status != 0) return image.status;
        send_head(icdev, image.bytes.size());
        send_packages(icdev, image.bytes);
    }
    platform::current().sleep_ms(wait_after_image_ms);
    VersionText version;
    return keyboard_version(icdev, version);
}

}  // namespace qz::firmware
