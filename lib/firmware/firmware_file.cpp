#include "firmware/firmware_file.h"

#include <fstream>
#include <new>

namespace qz::firmware {

FileBytes read_firmware_file(const std::filesystem::path& path, int short_read) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    if (!file) return {status_file_unopenable, {}};
    const std::streamoff size = file.tellg();
    if (size < 0) return {short_read, {}};
    file.seekg(0);
    FileBytes result;
    try {
        result.bytes.resize(static_cast<std::size_t>(size));
    } catch (const std::bad_alloc&) {
        return {status_out_of_memory, {}};
    } catch (const std::length_error&) {
        return {status_out_of_memory, {}};
    }
    if (!file.read(reinterpret_cast<char*>(result.bytes.data()), size)) return {short_read, {}};
    return result;
}

}  // namespace qz::firmware
