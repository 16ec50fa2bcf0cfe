#include "link/log.h"

#include <cstdio>
#include <string>
#include <system_error>

#include "platform/paths.h"
#include "platform/platform.h"

namespace qz::link {
namespace fs = std::filesystem;

namespace {

std::string date_folder_name(const platform::LocalTime& t) {
    char name[16];
    std::snprintf(name, sizeof name, "%04d%02d%02d", t.year % 10000, t.month % 100, t.day % 100);
    return name;
}

// The record in the bytes it has on disk: every line feed goes out as CR LF,
// as a text-mode stream writes it, so a record ends in 0D 0D 0A 0D 0D 0A.
std::string format_record(const platform::LocalTime& t, std::string_view message) {
    char head[48];
    const int head_length =
        std::snprintf(head, sizeof head, "[%02d:%02d:%02d:%d]==> ", t.hour, t.minute, t.second, t.millisecond);
    std::string record;
    record.reserve(message.size() + 128);
    record.append(head, static_cast<std::size_t>(head_length));
    for (char c : message) {
        if (c == '\n') record += '\r';
        record += c;
    }
    record += "\r\r\n\r\r\n";
    return record;
}

void append_record(std::string_view message) noexcept {
    try {
        const fs::path root = platform::log_root();
        std::error_code error;
        if (!fs::exists(root, error)) return;
        const platform::LocalTime now = platform::current().local_time();
        const fs::path folder = root / date_folder_name(now);
        fs::create_directory(folder, error);

        char file_name[16];
        std::snprintf(file_name, sizeof file_name, "qz3log%02d.txt", now.hour % 100);
        const std::string record = format_record(now, message);
        std::FILE* file = std::fopen((folder / file_name).string().c_str(), "ab");
        if (file == nullptr) return;
        // Unbuffered, so the record goes out as one append and records of
        // several writers stay apart.
        std::setvbuf(file, nullptr, _IONBF, 0);
        std::fwrite(record.data(), 1, record.size(), file);
        std::fclose(file);
    } catch (...) {
        // A failing log never reaches the caller.
    }
}

// Leading decimal digits of a folder name; a name without them reads as 0.
long long leading_number(const std::string& name) {
    long long value = 0;
    for (char c : name) {
        if (c < '0' || c > '9') break;
        if (value > 999'999'999'999LL) return value;  // far in the future either way
        value = value * 10 + (c - '0');
    }
    return value;
}


}  // namespace

void write_log(std::string_view message) { append_record(message); }

void clean_log_folders(const fs::path& root) noexcept {
    try {
        const platform::LocalTime now = platform::current().local_time();
        const long long today = std::stoll(date_folder_name(now));
        std::error_code error;
        fs::directory_iterator folders(root, error);
        if (error) return;
        for (const auto& entry : folders) {
            if (!platform::is_plain_folder(entry.path())) continue;
            if (leading_number(entry.path().filename().string()) >= today - 1) continue;
            fs::directory_iterator files(entry.path(), error);
            if (error) return;  // what is left waits for the next load
            for (const auto& file : files) {
                std::error_code ignored;
                if (!fs::is_directory(file.symlink_status(ignored))) fs::remove(file.path(), ignored);
            }
            std::error_code ignored;
            fs::remove(entry.path(), ignored);  // fails, and so stays, while a subfolder is left
        }
    } catch (...) {
        // Cleaning never stops the load.
    }
}

}  // namespace qz::link
