#include <windows.h>

#include "platform/module.h"

namespace qz::platform {
namespace {

HMODULE as_module(void* handle) { return static_cast<HMODULE>(handle); }

}  // namespace

std::string module_file_name(std::string_view name) { return std::string(name); }

// A bare name makes LoadLibraryA search the system's places (the program's
// folder, the system folders, PATH).
Module Module::load(std::string_view name) { return Module(LoadLibraryA(module_file_name(name).c_str())); }

Module Module::load_from(const std::filesystem::path& folder, std::string_view name) {
    if (folder.empty()) return Module(nullptr);
    std::filesystem::path file = folder / module_file_name(name);
    // ".\" keeps a relative folder from turning into a search.
    if (file.is_relative()) file = std::filesystem::path(".") / file;
    return Module(LoadLibraryA(file.string().c_str()));
}

Module::~Module() {
    if (handle_ != nullptr) FreeLibrary(as_module(handle_));
}

void* Module::symbol(const char* name) const {
    if (handle_ == nullptr) return nullptr;
    return reinterpret_cast<void*>(GetProcAddress(as_module(handle_), name));
}

// The module that holds this function: the DLL, or the program a test links it into.
std::filesystem::path own_module_folder() {
    HMODULE self = nullptr;
    if (!GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<LPCSTR>(&own_module_folder), &self))
        return {};
    char path[MAX_PATH];
    const DWORD length = GetModuleFileNameA(self, path, sizeof path);
    if (length == 0 || length >= sizeof path) return {};
    return std::filesystem::path(std::string(path, length)).parent_path();
}

}  // namespace qz::platform
