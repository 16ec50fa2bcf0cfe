// Identity cards: reading the card on the identity module, and files as Base64.
#include <array>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"
#include "qz_32.h"
#include "status_text.h"
#include "terminal_text.h"

namespace qzctl {
namespace {

// Room the library fills: the card text, the finger data in hexadecimal, Base64 of 2 MiB.
constexpr std::size_t card_text_size = 3096;
constexpr std::size_t finger_text_size = 2060;
constexpr std::size_t max_photo_path = 254;
constexpr std::uintmax_t base64_input_limit = 2097152;
constexpr std::size_t base64_text_size = base64_input_limit / 3 * 4 + 4;

constexpr int module_failed = -50;
constexpr int photo_component_missing = -2;
// The photo component's own failures, moved down by 2, and any value of it outside them.
constexpr int photo_not_decoded_lowest = -8;
constexpr int photo_not_decoded_other = -110;

struct Field {
    const char* key;
    const char* label;
};

// The fields of the card text behind its kind number, in their order.
constexpr std::array<Field, 10> resident_fields{{
    {"name", "Name"}, {"gender", "Gender"}, {"ethnic_group", "Ethnic group"}, {"birth_date", "Date of birth"},
    {"address", "Address"}, {"id_number", "ID number"}, {"issued_by", "Issued by"}, {"valid_from", "Valid from"},
    {"valid_until", "Valid until"}, {"reserved", "Reserved"},
}};
constexpr std::array<Field, 12> foreigner_fields{{
    {"name", "Name"}, {"gender", "Gender"}, {"card_number", "Card number"}, {"nationality", "Nationality"},
    {"chinese_name", "Chinese name"}, {"valid_from", "Valid from"}, {"valid_until", "Valid until"},
    {"birth_date", "Date of birth"}, {"card_version", "Card version"}, {"issued_by", "Issuing authority code"},
    {"card_type", "Card type"}, {"reserved", "Reserved"},
}};

struct CardKind {
    std::string_view number;
    const char* name;
    std::span<const Field> fields;
};

constexpr std::array<CardKind, 2> card_kinds{{
    {"0", "resident identity card", resident_fields},
    {"1", "foreigner's permanent residence card", foreigner_fields},
}};

struct ReadOptions {
    int mode = 0;
    std::string photo;
};

ReadOptions read_options;
std::string base64_file;

// The pieces of a GBK text whose fields each end in '|'. The second byte of a
// two-byte character may be '|' too, so characters are stepped over whole.
std::vector<std::string_view> split_fields(std::string_view gbk) {
    std::vector<std::string_view> fields;
    std::size_t start = 0;
    for (std::size_t i = 0; i < gbk.size(); ++i) {
        if (static_cast<unsigned char>(gbk[i]) >= 0x81) {
            ++i;
        } else if (gbk[i] == '|') {
            fields.push_back(gbk.substr(start, i - start));
            start = i + 1;
        }
    }
    return fields;
}

std::string read_failure(int result, bool with_photo) {
    const std::string number = " (" + std::to_string(result) + ")";
    if (result == module_failed) return "the identity module found no card or could not read it" + number;
    if (with_photo && result == photo_component_missing)
        return "the photo component (libGetInfo.so) was not found" + number;
    if (with_photo && ((result >= photo_not_decoded_lowest && result < photo_component_missing) ||
                       result == photo_not_decoded_other))
        return "the photo could not be decoded" + number;
    return status_text(result);
}

void add_card_text(Output& out, std::string_view gbk) {
    const auto text = [&out](std::string_view field) {
        return out.json() ? gbk_to_utf8(field) : gbk_to_terminal(field);
    };
    const auto fields = split_fields(gbk);
    for (const CardKind& kind : card_kinds) {
        if (fields.empty() || fields[0] != kind.number || fields.size() != kind.fields.size() + 1) continue;
        out.add("card", "Card", kind.name);
        for (std::size_t i = 0; i < kind.fields.size(); ++i)
            out.add(kind.fields[i].key, kind.fields[i].label, text(fields[i + 1]));
        return;
    }
    // A field holding '|' itself (the library does not escape it) upsets the count.
    std::cerr << "qzctl: the card text does not split into its fields; shown whole\n";
    out.add("text", "Card text", text(gbk));
}

void read_card(Session& session, Output& out) {
    const bool with_photo = !read_options.photo.empty();
    if (read_options.photo.size() > max_photo_path)
        throw Failure(exit_usage, "the photo path is longer than 254 characters");
    std::string card(card_text_size, '\0');
    std::string finger(finger_text_size, '\0');
    const char* photo = with_photo ? read_options.photo.c_str() : nullptr;
    const int result = IDReadCard(session.device(), read_options.mode, photo, card.data(), finger.data());
    if (result != 0)
        throw Failure(exit_command_failed, "reading the identity card failed: " + read_failure(result, with_photo));

    add_card_text(out, card.c_str());
    if (read_options.mode == 1) {
        const std::string hex = finger.c_str();
        out.add("finger", "Finger data", hex.empty() && !out.json() ? "none" : hex);
    }
    if (with_photo) out.add("photo", "Photo", read_options.photo);
}

void print_base64(Session&, Output& out) {
    std::string text(base64_text_size, '\0');
    const int result = GetFileBase64Buffer(base64_file.c_str(), text.data());
    if (result <= 0)
        throw Failure(exit_command_failed, base64_file + " cannot be encoded: it is empty, or may not be opened for "
                                                         "reading and writing (" + std::to_string(result) + ")");
    text.resize(static_cast<std::size_t>(result) - 1);
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(base64_file, error);
    if (!error && size > base64_input_limit)
        std::cerr << "qzctl: only the first 2097152 bytes of " << base64_file << " are encoded\n";
    if (out.json())
        out.add("base64", "Base64", text);
    else
        std::cout << text << "\n";
}

}  // namespace

void add_identity_commands(CLI::App& app, Action& action) {
    auto* idcard = app.add_subcommand("idcard", "Read the identity card on the identity module");
    idcard->add_option("-m,--mode", read_options.mode, "0: text and photo, 1: also the finger data")
        ->check(CLI::IsMember({0, 1}));
    idcard->add_option("-f,--photo", read_options.photo, "Write the photo to FILE as a 24-bit BMP")
        ->type_name("FILE");
    idcard->callback([&action] { action = read_card; });

    auto* base64 = app.add_subcommand("base64", "Print a file (its first 2 MiB) as Base64 text");
    base64->add_option("file", base64_file, "The file")->required()->check(CLI::ExistingFile);
    base64->callback([&action] { action = print_base64; });
}

}  // namespace qzctl
