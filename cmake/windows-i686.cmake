set(QZ_32_MINGW_TRIPLET i686-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR x86)
# Wine for 32-bit programs (Debian's wine32, of the i386 architecture).
set(QZ_32_WINE_PROGRAM wine)
include(${CMAKE_CURRENT_LIST_DIR}/windows-mingw.cmake)
