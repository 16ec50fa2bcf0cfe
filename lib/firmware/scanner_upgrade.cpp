#include "firmware/scanner_upgrade.h"

#include <algorithm>
#include <array>

#include "firmware/firmware_file.h"
#include "firmware/scanner_loader.h"
#include "link/command.h"
#include "link/log.h"
#include "platform/platform.h"

namespace qz::firmware {
namespace {

int send_packages(int icdev, std::span<const std::uint8_t> file, qz_32_upgrade_progress_callback progress) {
    const std::size_t count = (file.size() + scanner_package_size - 1) / scanner_package_size;
    const int total = static_cast<int>(count);
    if (progress != nullptr) progress(total, 0, 0);
    for (std::size_t index = 0; index < count; ++index) {
        std::array<std::uint8_t, scanner_package_size> package{};
        platform::current().sleep_ms(wait_before_scanner_package_ms);
        const auto data = file.subspan(index * scanner_package_size);
        std::copy_n(data.begin(), std::min(data.size(), package.size()), package.begin());
        const int result = download_scaner_upgrade_data(icdev, package);
        if (progress != nullptr) progress(total, static_cast<int>(index + 1), result);
        if (result != 0) {
            link::write_log(link::log_format("download_scaner_upgrade_data error. currPackage : %04d,st : 0x%02x.",
                                             static_cast<int>(index), static_cast<unsigned>(result)));
            return result;
        }
    }
    return 0;
}

}  // namespace

int upgrade_scanner(int icdev, const std::filesystem::path& file, qz_32_upgrade_progress_callback progress) {
    const link::TimeoutsForCommand timeouts(5000, 0);
    if (!enter_scanner_loader(icdev, loader_limit_ms)) return status_no_scanner_loader;
    if (const int result = prepare_scanner_upgrade(icdev); result != 0) return result;
    {
        const FileBytes firmware = read_firmware_file(file, status_scanner_short_read);
        if (firmware.status != 0) return firmware.status;
        if (const int result = send_packages(icdev, firmware.bytes, progress); result != 0) return result;
    }
    return leave_scanner_loader(icdev);
}

}  // namespace qz::firmware
