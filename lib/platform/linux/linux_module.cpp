#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cctype>

#include "platform/module.h"

namespace qz::platform {
namespace {

void* open_library(const std::string& file) { return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL); }

bool ends_with_dll(std::string_view name) {
    constexpr std::string_view suffix = ".dll";
    return name.size() >= suffix.size() &&
           std::equal(suffix.begin(), suffix.end(), name.end() - static_cast<std::ptrdiff_t>(suffix.size()),
                      [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
}

}  // namespace

std::string module_file_name(std::string_view name) {
    if (ends_with_dll(name)) name.remove_suffix(4);
    return "lib" + std::string(name) + ".so";
}

// A file name without a slash makes dlopen search the usual places (the
// caller's run path, LD_LIBRARY_PATH, the loader's cache, the system folders).
Module Module::load(std::string_view name) { return Module(open_library(module_file_name(name))); }

Module Module::load_from(const std::filesystem::path& folder, std::string_view name) {
    if (folder.empty()) return Module(nullptr);
    std::filesystem::path file = folder / module_file_name(name);
    // "./" keeps a relative folder from turning into a search.
    if (file.is_relative()) file = std::filesystem::path(".") / file;
    return Module(open_library(file.string()));
}

Module::~Module() {
    if (handle_ != nullptr) dlclose(handle_);
}

void* Module::symbol(const char* name) const { return handle_ != nullptr ? dlsym(handle_, name) : nullptr; }

std::filesystem::path own_module_folder() {
    Dl_info info{};
    link_map* map = nullptr;
    if (dladdr1(reinterpret_cast<const void*>(&own_module_folder), &info, reinterpret_cast<void**>(&map),
                RTLD_DL_LINKMAP) == 0 || map == nullptr)
        return {};
    // The main program has no name in its link map (a library built into it, as
    // in the tests); a library has the path it was loaded by.
    const std::filesystem::path file = *map->l_name != '\0' ? map->l_name : "/proc/self/exe";
    std::error_code error;
    std::filesystem::path resolved = std::filesystem::canonical(file, error);
    if (error) resolved = std::filesystem::absolute(file, error);
    return resolved.parent_path();
}

}  // namespace qz::platform
