// The DLL as a host program uses it: loaded by name, every export found by its
// undecorated name, called with the header's calling convention.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "api/qz_32.h"
#include "support/temp_dir.h"

namespace {

// The names the DLL must export: the header's declarations, one a line.
const std::vector<std::string>& declared_names() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> result;
        std::ifstream list(QZ_32_EXPORT_LIST);
        for (std::string line; std::getline(list, line);)
            if (!line.empty()) result.push_back(line);
        return result;
    }();
    return names;
}

class LoadedDll {
public:
    LoadedDll() : module_(LoadLibraryA("qz_32.dll")) {}
    ~LoadedDll() {
        if (module_ != nullptr) FreeLibrary(module_);
    }
    LoadedDll(const LoadedDll&) = delete;
    LoadedDll& operator=(const LoadedDll&) = delete;

    HMODULE get() const { return module_; }
    template <typename Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }

private:
    HMODULE module_;
};

TEST(DllExports, EveryDeclaredFunctionIsFoundByItsUndecoratedName) {
    ASSERT_EQ(declared_names().size(), 207u);
    const LoadedDll dll;
    ASSERT_NE(dll.get(), nullptr) << "qz_32.dll did not load, error " << GetLastError();
    for (const auto& name : declared_names())
        EXPECT_NE(GetProcAddress(dll.get(), name.c_str()), nullptr) << name;
    // Nothing is exported under a stdcall-decorated name.
    EXPECT_EQ(GetProcAddress(dll.get(), "open_device@8"), nullptr);
    EXPECT_EQ(GetProcAddress(dll.get(), "_open_device@8"), nullptr);
}

// Calls through GetProcAddress with the header's convention: a convention that
// differs from the DLL's leaves the stack unbalanced on 32 bits, and the results
// would be wrong or the program would crash.
TEST(DllExports, CallsThroughTheHeadersConventionGiveTheRightResults) {
    const LoadedDll dll;
    using HexAsc = int QZ_32_CALL(const unsigned char*, char*, unsigned int);
    using DesEncrypt = int QZ_32_CALL(const unsigned char*, const unsigned char*, unsigned char, unsigned char*);
    auto* hex_asc_function = dll.find<HexAsc>("hex_asc");
    auto* des_encrypt_function = dll.find<DesEncrypt>("des_encrypt");
    ASSERT_NE(hex_asc_function, nullptr);
    ASSERT_NE(des_encrypt_function, nullptr);

    // The classic single-DES test vector.
    const unsigned char key[8] = {0x13, 0x34, 0x57, 0x79, 0x9B, 0xBC, 0xDF, 0xF1};
    const unsigned char plain[8] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};
    unsigned char cipher[8] = {};
    for (int round = 0; round < 100; ++round) ASSERT_EQ(des_encrypt_function(key, plain, 8, cipher), 0);
    char text[17] = {};
    ASSERT_EQ(hex_asc_function(cipher, text, 8), 0);
    EXPECT_STREQ(text, "85E813540F0AB405");
}

// DllMain runs the load-time work: old date folders of the log root go.
TEST(DllExports, LoadingTheDllCleansOldLogFolders) {
    const qz::test::TempDir root;
    const qz::test::ScopedEnv env{"QZ_32_LOG_ROOT", root.path().string()};
    std::filesystem::create_directory(root.path() / "20000101");
    std::ofstream(root.path() / "20000101" / "qz3log09.txt") << "old";
    std::filesystem::create_directory(root.path() / "29991231");

    const LoadedDll dll;
    ASSERT_NE(dll.get(), nullptr);
    EXPECT_FALSE(std::filesystem::exists(root.path() / "20000101"));
    EXPECT_TRUE(std::filesystem::exists(root.path() / "29991231"));
}

}  // namespace
