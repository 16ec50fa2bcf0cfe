// The DLL's entry point runs the library's load-time work when a process attaches.
#include <windows.h>

#include "platform/load_hook.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) qz::on_library_load();
    return TRUE;
}
