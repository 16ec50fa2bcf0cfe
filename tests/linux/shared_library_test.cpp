// The shared library as a host loads it: what it exports and what loading does.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <ctime>
#include <fstream>
#include <regex>
#include <set>
#include <string>

#include "support/temp_dir.h"

namespace qz::test {
namespace {
namespace fs = std::filesystem;

std::string date_folder(int days_ago) {
    std::time_t when = std::time(nullptr) - days_ago * 86400;
    std::tm parts{};
    localtime_r(&when, &parts);
    char name[16];
    std::strftime(name, sizeof name, "%Y%m%d", &parts);
    return name;
}

TEST(SharedLibrary, LoadingCleansOldLogFoldersAndExportsNothingButTheInterface) {
    TempDir dir;
    const fs::path root = dir.path() / "QZlog";
    for (int days_ago : {0, 1, 3, 40}) {
        fs::create_directories(root / date_folder(days_ago));
        std::ofstream(root / date_folder(days_ago) / "qz3log01.txt") << "x";
    }
    ScopedEnv env("QZ_32_LOG_ROOT", root.string());

    void* library = dlopen(QZ_32_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_TRUE(fs::exists(root / date_folder(0)));
    EXPECT_TRUE(fs::exists(root / date_folder(1)));
    // Three days ago is always older than yesterday by number, even across a month.
    EXPECT_FALSE(fs::exists(root / date_folder(3)));
    EXPECT_FALSE(fs::exists(root / date_folder(40)));

    for (const char* name : {"dev_transact", "_ZN2qz4link9write_logESt17basic_string_viewIcSt11char_traitsIcEE",
                             "_ZN2qz8platform7currentEv"})
        EXPECT_EQ(dlsym(library, name), nullptr) << name;
    dlclose(library);
}

// The names the public header declares.
std::set<std::string> declared_names() {
    std::ifstream header(QZ_32_HEADER);
    const std::regex declaration(R"(^QZ_32_API .*[^A-Za-z0-9_]([A-Za-z_][A-Za-z0-9_]*) *\()");
    std::set<std::string> names;
    std::smatch match;
    for (std::string line; std::getline(header, line);)
        if (std::regex_search(line, match, declaration)) names.insert(match[1]);
    return names;
}

// Every name the header declares resolves in the shared library.
TEST(SharedLibrary, ResolvesEveryDeclaredName) {
    const std::set<std::string> declared = declared_names();
    EXPECT_EQ(declared.size(), 207u);
    void* library = dlopen(QZ_32_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    for (const std::string& name : declared) EXPECT_NE(dlsym(library, name.c_str()), nullptr) << name;
    dlclose(library);
}

}  // namespace
}  // namespace qz::test
