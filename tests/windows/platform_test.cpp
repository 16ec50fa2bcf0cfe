// The Windows backend of the platform layer under the real system calls.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "platform/gbk.h"
#include "platform/module.h"
#include "platform/paths.h"
#include "platform/platform.h"
#include "platform/random.h"
#include "support/foreign_handles.h"
#include "support/temp_dir.h"

namespace qz::platform {
namespace {

std::string to_gbk(const std::vector<std::uint16_t>& units, std::size_t room) {
    std::vector<std::uint8_t> bytes;
    for (auto unit : units) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    std::string out(room, '\0');
    out.resize(ucs2le_to_gbk(bytes, out));
    return out;
}

TEST(WindowsGbk, ConvertsThroughCodePage936) {
    struct Case {
        const char* what;
        std::vector<std::uint16_t> units;
        std::size_t room;
        std::string gbk;
    };
    const Case cases[] = {
        {"ASCII", {'A', 'b', '1'}, 16, "Ab1"},
        {"CJK", {0x4E2D, 0x6587}, 16, "\xD6\xD0\xCE\xC4"},
        {"stops at the zero unit", {'A', 0, 'B'}, 16, "A"},
        {"a unit without a GBK form", {'A', 0x0E01, 'B'}, 16, "A?B"},
        {"an unpaired surrogate", {0xD800, 'B'}, 16, "?B"},
        {"a character that does not fit whole is left out", {'A', 0x4E2D}, 2, "A"},
        {"no room", {'A'}, 0, ""},
    };
    for (const auto& c : cases) EXPECT_EQ(to_gbk(c.units, c.room), c.gbk) << c.what;
}

TEST(WindowsModules, LoadsComponentsByTheirDllNames) {
    EXPECT_EQ(module_file_name("GetInfo.dll"), "GetInfo.dll");
    // The test program sits beside the DLLs.
    const auto folder = own_module_folder();
    ASSERT_TRUE(std::filesystem::exists(folder / "qz_32.dll")) << folder;
    const Module photo = Module::load_from(folder, "GetInfo.dll");
    ASSERT_TRUE(photo);
    EXPECT_NE(photo.symbol("GetBmp"), nullptr);
    EXPECT_EQ(photo.symbol("NoSuchFunction"), nullptr);
    EXPECT_FALSE(Module::load("NoSuchComponent.dll"));
    EXPECT_FALSE(Module::load_from({}, "GetInfo.dll"));
}

// The log's cleaning leaves alone folders with any attribute beyond "folder".
TEST(WindowsPaths, OnlyFoldersWithoutOtherAttributesArePlain) {
    const test::TempDir dir;
    const auto make = [&](const char* name, DWORD extra) {
        const auto folder = dir.path() / name;
        std::filesystem::create_directory(folder);
        if (extra != 0) SetFileAttributesA(folder.string().c_str(), FILE_ATTRIBUTE_DIRECTORY | extra);
        return folder;
    };
    EXPECT_TRUE(is_plain_folder(make("20200101", 0)));
    EXPECT_FALSE(is_plain_folder(make("20200102", FILE_ATTRIBUTE_HIDDEN)));
    EXPECT_FALSE(is_plain_folder(make("20200103", FILE_ATTRIBUTE_SYSTEM)));
    EXPECT_FALSE(is_plain_folder(dir.path() / "missing"));
    std::ofstream(dir.path() / "20200104") << "a file";
    EXPECT_FALSE(is_plain_folder(dir.path() / "20200104"));
    SetFileAttributesA((dir.path() / "20200103").string().c_str(), FILE_ATTRIBUTE_DIRECTORY);
}

TEST(WindowsSerial, PortsThatDoNotExistAreUnavailable) {
    auto& os = system_platform();
    const SerialSettings settings{.baud = 9600, .read_timeout_ms = 10};
    EXPECT_EQ(os.serial_open("\\\\.\\COM32", settings), static_cast<int>(SerialOpenError::unavailable));
    EXPECT_EQ(os.serial_open("NUL-NOT-A-PORT", settings), static_cast<int>(SerialOpenError::unavailable));
}

// The port's control block and time-outs as the settings ask, on the COM port
// that scripts/windows.sh maps to qzsim (skipped without one). Wine on a
// pseudo-terminal keeps other framings unreliably, so only 8N1 is asked for.
TEST(WindowsSerial, OpenSetsSpeedFlowControlAndTimeouts) {
    const char* port = std::getenv("QZ_32_WINDOWS_COM_PORT");
    if (port == nullptr) GTEST_SKIP() << "no COM port mapped";
    auto& os = system_platform();
    const std::string name = "\\\\.\\COM" + std::to_string(std::atoi(port) + 1);
    const int handle = os.serial_open(name, {.baud = 57600, .read_timeout_ms = 321});
    ASSERT_GT(handle, 1);
    DCB control{};
    control.DCBlength = sizeof control;
    COMMTIMEOUTS timeouts{};
    ASSERT_TRUE(GetCommState(LongToHandle(handle), &control));
    ASSERT_TRUE(GetCommTimeouts(LongToHandle(handle), &timeouts));
    EXPECT_EQ(control.BaudRate, 57600u);
    EXPECT_EQ(control.ByteSize, 8);
    EXPECT_EQ(control.StopBits, ONESTOPBIT);
    EXPECT_EQ(control.Parity, NOPARITY);
    EXPECT_FALSE(control.fOutxCtsFlow || control.fOutX || control.fInX);
    EXPECT_EQ(timeouts.ReadTotalTimeoutConstant, 321u);
    EXPECT_EQ(timeouts.ReadIntervalTimeout, 500u);
    EXPECT_EQ(timeouts.WriteTotalTimeoutConstant, 500u);
    EXPECT_TRUE(os.close(handle));
}

// Numbers the platform never handed out are refused by every operation,
// including the standard handles and 0.
TEST(WindowsHandles, OnlyOwnHandlesAreActedOn) {
    const int stdout_number = static_cast<int>(HandleToLong(GetStdHandle(STD_OUTPUT_HANDLE)));
    for (int handle : {0, 1, -1, stdout_number, 0x7FFFFFF0})
        test::expect_foreign_handle_refused(system_platform(), handle);
    EXPECT_NE(GetFileType(GetStdHandle(STD_OUTPUT_HANDLE)), static_cast<DWORD>(FILE_TYPE_UNKNOWN));
}

TEST(WindowsRandom, DrawsDiffer) {
    std::uint8_t first[16] = {};
    std::uint8_t second[16] = {};
    random_bytes(first);
    random_bytes(second);
    EXPECT_NE(std::memcmp(first, second, sizeof first), 0);
}

}  // namespace
}  // namespace qz::platform
