// Libraries loaded at run time, such as the outside photo decoder. Names are given
// in the library's own form ("GetInfo.dll"); each system maps them to its file name.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace qz::platform {

// One loaded library, released when the object goes.
class Module {
public:
    // Through the system's search for libraries.
    static Module load(std::string_view name);
    // From `folder` only (an empty folder loads nothing).
    static Module load_from(const std::filesystem::path& folder, std::string_view name);

    Module(Module&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Module& operator=(Module&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    ~Module();

    explicit operator bool() const { return handle_ != nullptr; }

    // Address of an exported function, or nullptr (also for a library not loaded).
    void* symbol(const char* name) const;

private:
    explicit Module(void* handle) : handle_(handle) {}
    void* handle_;
};

// File name of the library named `name` on this system ("GetInfo.dll" -> "libGetInfo.so").
std::string module_file_name(std::string_view name);

// Folder of the file that holds this library's own code.
std::filesystem::path own_module_folder();

}  // namespace qz::platform
