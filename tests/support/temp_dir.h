// A fresh folder under the system's temporary folder, removed with the object,
// and the files tests look into.
#pragma once

#include <filesystem>
#include <string>

namespace qz::test {

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

// The whole contents of a file; empty when it cannot be read.
std::string file_text(const std::filesystem::path& file);

// Sets an environment variable for the life of the object, then restores it.
class ScopedEnv {
public:
    ScopedEnv(std::string name, const std::string& value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string name_;
    std::string old_value_;
    bool had_value_ = false;
};

}  // namespace qz::test
