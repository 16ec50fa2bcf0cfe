#include "support/temp_dir.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace qz::test {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "qz32-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path_, ignored))
        std::filesystem::permissions(entry.path(), std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ignored);
    std::filesystem::remove_all(path_, ignored);
}

std::string file_text(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

ScopedEnv::ScopedEnv(std::string name, const std::string& value) : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str())) {
        had_value_ = true;
        old_value_ = old;
    }
    setenv(name_.c_str(), value.c_str(), 1);
}

ScopedEnv::~ScopedEnv() {
    if (had_value_)
        setenv(name_.c_str(), old_value_.c_str(), 1);
    else
        unsetenv(name_.c_str());
}

}  // namespace qz::test
