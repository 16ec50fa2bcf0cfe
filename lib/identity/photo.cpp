#include "identity/photo.h"

#include <filesystem>
#include <fstream>

#include "platform/module.h"

namespace qz::identity {
namespace {

namespace fs = std::filesystem;

using GetBmp = int (*)(const char* path, int mode);
constexpr int get_bmp_mode = 2;
constexpr std::string_view working_name = "sfz";

// The folder of `path` as a prefix for the working names: "dir/" for "dir/x.bmp",
// nothing (the current folder) for a bare file name.
std::string working_prefix(const std::string& path) {
    const std::string folder = fs::path(path).parent_path().string();
    if (folder.empty() || folder.back() == '/') return folder;
    return folder + "/";
}

// Removes a file or an empty folder of that name, if there is one.
void remove_if_there(const std::string& path) {
    std::error_code ignored;
    fs::remove(path, ignored);
}

void write_file(const std::string& path, std::span<const std::uint8_t> bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// Renames `from` to `to`, replacing it, and copies where a rename cannot reach.
void move_replacing(const std::string& from, const std::string& to) {
    std::error_code error;
    fs::rename(from, to, error);
    if (!error) return;
    if (fs::copy_file(from, to, fs::copy_options::overwrite_existing, error)) fs::remove(from, error);
}

}  // namespace

int DecodeWltFile(const std::string& wlt_path, std::string_view library) {
    platform::Module module = platform::Module::load(library);
    if (!module) module = platform::Module::load_from(platform::own_module_folder(), library);
    const auto get_bmp = reinterpret_cast<GetBmp>(module.symbol("GetBmp"));
    return get_bmp != nullptr ? get_bmp(wlt_path.c_str(), get_bmp_mode) : 0;
}

int SavePhotoFile(std::span<const std::uint8_t> photo, const std::string& photo_path, std::string_view library) {
    const std::string prefix = working_prefix(photo_path);
    std::error_code ignored;
    if (!prefix.empty() && !fs::exists(prefix, ignored)) fs::create_directories(prefix, ignored);

    const std::string wlt_name = prefix + std::string(working_name) + ".wlt";
    const std::string bmp_name = prefix + std::string(working_name) + ".bmp";
    for (const std::string* stale : {&wlt_name, &bmp_name, &photo_path}) remove_if_there(*stale);

    write_file(wlt_name, photo);
    const int value = DecodeWltFile(wlt_name, library);

    if (fs::exists(bmp_name, ignored)) {
        if (photo_path != bmp_name) move_replacing(bmp_name, photo_path);
        return 0;
    }
    return value >= -6 && value <= 0 ? value - 2 : -110;
}

}  // namespace qz::identity
