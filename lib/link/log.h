// The optional diagnostic log: one text file an hour under the log root, only
// while that root exists. Nothing here ever reports a failure to a caller.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace qz::link {

// Writers of one record "[hh:mm:ss:ms]==> message" to the file of the current
// hour. Both have the same behaviour; link_log serves the link layer.
void write_log(std::string_view message);
void link_log(std::string_view message);

// printf-style formatting of a log message.
std::string log_format(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Removes the date folders under `root` older than yesterday (by their number).
void clean_log_folders(const std::filesystem::path& root) noexcept;

}  // namespace qz::link
