// Keeps a component DLL loaded once loaded (what -z nodelete does for a shared
// object): the library frees it after each use, and a component that keeps
// costly state (a font) would otherwise build it again for every call.
#include <windows.h>

namespace {

const bool pinned = [] {
    HMODULE self = nullptr;
    return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                              reinterpret_cast<LPCWSTR>(&pinned), &self) != 0;
}();

}  // namespace
