# Cross-compiling for Windows with Debian's MinGW-w64 (POSIX thread model).
# The including file sets QZ_32_MINGW_TRIPLET and CMAKE_SYSTEM_PROCESSOR.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${QZ_32_MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${QZ_32_MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${QZ_32_MINGW_TRIPLET}-windres)
set(CMAKE_DLLTOOL ${QZ_32_MINGW_TRIPLET}-dlltool)
set(CMAKE_FIND_ROOT_PATH /usr/${QZ_32_MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The C++ runtime and the thread library go into each DLL and program, so that
# they run with the system's own DLLs alone.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")

# Header-only libraries of the build machine that hold nothing system-specific
# (stb_image), without the rest of its /usr/include.
set(CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${CMAKE_CURRENT_LIST_DIR}/windows-headers)
set(CMAKE_C_STANDARD_INCLUDE_DIRECTORIES ${CMAKE_CURRENT_LIST_DIR}/windows-headers)

# Test programs run under Wine.
find_program(QZ_32_WINE NAMES ${QZ_32_WINE_PROGRAM} PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
if(QZ_32_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QZ_32_WINE})
endif()
