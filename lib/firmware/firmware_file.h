// Firmware files on the host, read whole.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace qz::firmware {

inline constexpr int status_file_unopenable = -89;
inline constexpr int status_out_of_memory = -96;

struct FileBytes {
    int status = 0;  // 0, status_file_unopenable, status_out_of_memory or `short_read`
    std::vector<std::uint8_t> bytes;
};

// The whole file `path`; `short_read` is the status when it can't be read to its end.
FileBytes read_firmware_file(const std::filesystem::path& path, int short_read);

}  // namespace qz::firmware
