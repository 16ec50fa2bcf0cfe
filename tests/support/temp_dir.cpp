#include "support/temp_dir.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace qz::test {
namespace {

void set_variable(const std::string& name, const std::string& value) {
#ifdef _WIN32
    _putenv_s(name.c_str(), value.c_str());
#else
    setenv(name.c_str(), value.c_str(), 1);
#endif
}

void unset_variable(const std::string& name) {
#ifdef _WIN32
    _putenv_s(name.c_str(), "");
#else
    unsetenv(name.c_str());
#endif
}

}  // namespace

// A name nobody else has: create_directory refuses one that exists.
TempDir::TempDir() {
    std::random_device source;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const auto candidate =
            std::filesystem::temp_directory_path() / ("qz32-test-" + std::to_string(source()) + std::to_string(source()));
        if (std::filesystem::create_directory(candidate)) {
            path_ = candidate;
            return;
        }
    }
    throw std::runtime_error("no fresh temporary folder");
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
    set_variable(name_, value);
}

ScopedEnv::~ScopedEnv() {
    if (had_value_)
        set_variable(name_, old_value_);
    else
        unset_variable(name_);
}

}  // namespace qz::test
