// The optional diagnostic log: one text file an hour under the log root, only
// while that root exists. Nothing here ever reports a failure to a caller.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace qz::link {

// Writes one record "[hh:mm:ss:ms]==> message" to the file of the current hour.
void write_log(std::string_view message);

// printf-style formatting of a log message from numbers and texts.
template <class... Arguments>
std::string log_format(const char* format, Arguments... arguments) {
    const int length = std::snprintf(nullptr, 0, format, arguments...);
    if (length <= 0) return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    std::snprintf(text.data(), text.size() + 1, format, arguments...);
    return text;
}

// Removes the date folders under `root` older than yesterday (by their number).
void clean_log_folders(const std::filesystem::path& root) noexcept;

}  // namespace qz::link
