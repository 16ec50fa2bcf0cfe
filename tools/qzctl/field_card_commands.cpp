// Contactless memory cards: sector cards (mifare), Ultralight-class cards and
// NTAG215 tags. Every command finds the card first; a sector command authenticates
// the sector before it reads or writes.
#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "hex_dump.h"
#include "qz_32.h"

namespace qzctl {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t block_size = 16;
constexpr std::size_t blocks_per_sector = 4;
constexpr std::size_t sector_key_size = 6;
constexpr std::size_t page_size = 4;
constexpr std::size_t ultralight_key_size = 16;
constexpr std::size_t password_size = 4;
constexpr std::size_t uid_size = 7;
constexpr std::size_t serial_room = 16;
constexpr std::size_t base_info_room = 193;
constexpr std::size_t page_read_room = 100;
constexpr unsigned char key_a = 0x60;
constexpr unsigned char key_b = 0x61;
constexpr unsigned char select_any = 1;

struct FieldOptions {
    int sector = -1;
    int block = -1;
    int page = -1;  // not given
    int pages = 4;
    std::string key;
    bool use_key_b = false;
    std::string data;
    std::string text;
    std::optional<unsigned> init;
    std::optional<unsigned> increment;
    std::optional<unsigned> decrement;
};
FieldOptions options;

void add_memory(Output& out, const Bytes& bytes, std::size_t first_address) {
    out.add("address", "Address", first_address);
    if (out.json()) out.add("data", "Data", to_hex(bytes.data(), bytes.size()));
    else out.add("dump", "Data", hex_dump(bytes, first_address));
}

// Finds the sector card and authenticates the sector of `block` (or options.sector).
void open_sector(int device, Output& out, std::size_t sector) {
    std::array<unsigned char, serial_room> serial{};
    Session::check(rf_card(device, select_any, serial.data()), "finding the card");
    const Bytes key = hex_argument(options.key.empty() ? "FFFFFFFFFFFF" : options.key, sector_key_size, "a key");
    Session::check(rf_authentication_key(device, options.use_key_b ? key_b : key_a,
                                         static_cast<unsigned char>(sector), key.data()),
                   "authenticating sector " + std::to_string(sector));
    out.add("sector", "Sector", sector);
}

int chosen_page() {
    if (options.page < 0) throw Failure(exit_usage, "give the page with -p");
    return options.page;
}

std::size_t chosen_block() {
    if (options.block < 0) throw Failure(exit_usage, "give the block with -b");
    return static_cast<std::size_t>(options.block);
}

void mifare_auth(Session& session, Output& out) {
    if (options.sector < 0) throw Failure(exit_usage, "give the sector with -s");
    open_sector(session.device(), out, static_cast<std::size_t>(options.sector));
    out.add("authenticated", "Authenticated", true);
}

void mifare_read(Session& session, Output& out) {
    const int device = session.device();
    const bool one = options.block >= 0;
    if (!one && options.sector < 0) throw Failure(exit_usage, "give a block with -b or a sector with -s");
    const std::size_t first = one ? chosen_block() : static_cast<std::size_t>(options.sector) * blocks_per_sector;
    open_sector(device, out, first / blocks_per_sector);
    Bytes bytes;
    for (std::size_t block = first; block < first + (one ? 1 : blocks_per_sector); ++block) {
        std::array<unsigned char, block_size> data{};
        Session::check(rf_read(device, static_cast<unsigned char>(block), data.data()),
                       "reading block " + std::to_string(block));
        bytes.insert(bytes.end(), data.begin(), data.end());
    }
    add_memory(out, bytes, first * block_size);
}

void mifare_write(Session& session, Output& out) {
    const int device = session.device();
    const std::size_t block = chosen_block();
    const Bytes data = hex_argument(options.data, block_size, "a block");
    open_sector(device, out, block / blocks_per_sector);
    Session::check(rf_write(device, static_cast<unsigned char>(block), data.data()),
                   "writing block " + std::to_string(block));
    out.add("written", "Written", block);
}

void mifare_value(Session& session, Output& out) {
    const int device = session.device();
    const auto block = static_cast<unsigned char>(chosen_block());
    open_sector(device, out, block / blocks_per_sector);
    if (options.init) Session::check(rf_initval(device, block, *options.init), "setting the value");
    if (options.increment) Session::check(rf_increment(device, block, *options.increment), "incrementing");
    if (options.decrement) Session::check(rf_decrement(device, block, *options.decrement), "decrementing");
    unsigned int value = 0;
    Session::check(rf_readval(device, block, &value), "reading the value of block " + std::to_string(block));
    out.add("value", "Value", value);
}

// Opens the Ultralight card and, with -k, authenticates.
void open_ultralight(int device, Output& out) {
    std::array<unsigned char, uid_size> uid{};
    Session::check(MF_OpenCard(device, select_any, uid.data()), "finding the card");
    out.add("uid", "UID", to_hex(uid.data(), uid.size()));
    if (options.key.empty()) return;
    const Bytes key = hex_argument(options.key, ultralight_key_size, "the key");
    Session::check(MF_Authentication(device, key.data(), static_cast<unsigned char>(key.size())), "authenticating");
}

void ultralight_read(Session& session, Output& out) {
    const int device = session.device();
    open_ultralight(device, out);
    const int first = std::max(options.page, 0);
    Bytes bytes;
    for (int page = first; page < first + options.pages; ++page) {
        std::array<unsigned char, page_size> data{};
        Session::check(MF_Read(device, static_cast<unsigned char>(page), data.data()),
                       "reading page " + std::to_string(page));
        bytes.insert(bytes.end(), data.begin(), data.end());
    }
    add_memory(out, bytes, static_cast<std::size_t>(first) * page_size);
}

void ultralight_write(Session& session, Output& out) {
    const int device = session.device();
    const Bytes data = hex_argument(options.data, page_size, "a page");
    open_ultralight(device, out);
    const int page = chosen_page();
    Session::check(MF_Write_4bytes(device, static_cast<unsigned char>(page), data.data()),
                   "writing page " + std::to_string(page));
    out.add("written", "Written", page);
}

void ultralight_lock(Session& session, Output& out) {
    const int device = session.device();
    open_ultralight(device, out);
    const int page = chosen_page();
    Session::check(MF_WriteLock(device, static_cast<unsigned char>(page)), "locking page " + std::to_string(page));
    out.add("locked", "Locked", page);
}

// Opens the NTAG215 and, with -k, authenticates with the password.
void open_ntag(int device, Output& out, bool authenticate) {
    std::array<unsigned char, uid_size> uid{};
    Session::check(NTAG215_OpenCard(device, uid.data()), "finding the tag");
    out.add("uid", "UID", to_hex(uid.data(), uid.size()));
    if (!authenticate || options.key.empty()) return;
    const Bytes password = hex_argument(options.key, password_size, "the password");
    Session::check(NTAG215_Authentication(device, password.data(), password_size), "authenticating");
}

void ntag_init(Session& session, Output& out) {
    const int device = session.device();
    const Bytes password = hex_argument(options.key, password_size, "the new password");
    open_ntag(device, out, false);
    // NTAG215_Init tells by its result where it stopped.
    static const std::array<const char*, 5> steps{"authenticating with the factory password", "changing the password",
                                                  "writing the text", "locking the text", "taking a text over 192 bytes"};
    const int result = NTAG215_Init(device, password.data(), options.text.c_str());
    if (result != 0)
        Session::check(result, -result >= 1 && -result <= 5 ? steps[static_cast<std::size_t>(-result - 1)] : "personalising");
    out.add("personalised", "Personalised", true);
}

void ntag_read(Session& session, Output& out) {
    const int device = session.device();
    open_ntag(device, out, true);
    if (options.page < 0) {
        std::array<unsigned char, base_info_room> text{};
        Session::check(NTAG215_ReadBaseInfo(device, text.data()), "reading the base information");
        out.add("text", "Text", std::string(reinterpret_cast<const char*>(text.data())));
        return;
    }
    Bytes bytes;
    for (int page = options.page; page < options.page + options.pages; ++page) {
        std::array<unsigned char, page_read_room> data{};
        Session::check(NTAG215_Read(device, static_cast<unsigned char>(page), data.data()),
                       "reading page " + std::to_string(page));
        bytes.insert(bytes.end(), data.begin(), data.begin() + page_size);
    }
    add_memory(out, bytes, static_cast<std::size_t>(options.page) * page_size);
}

void ntag_write(Session& session, Output& out) {
    const int device = session.device();
    const Bytes data = hex_argument(options.data, page_size, "a page");
    open_ntag(device, out, true);
    const int page = chosen_page();
    Session::check(NTAG215_Write_4bytes(device, static_cast<unsigned char>(page), data.data()),
                   "writing page " + std::to_string(page));
    out.add("written", "Written", page);
}

CLI::App* command(CLI::App& group, const char* name, const char* help, Action& action, void (*run)(Session&, Output&)) {
    auto* sub = group.add_subcommand(name, help);
    sub->callback([&action, run] { action = run; });
    return sub;
}

}  // namespace

void add_field_card_commands(CLI::App& app, Action& action) {
    auto* mifare = app.add_subcommand("mifare", "Sector cards in the field: authenticate, read, write, values");
    mifare->require_subcommand(1);
    for (auto* sub : {command(*mifare, "auth", "Authenticate a sector (-s)", action, mifare_auth),
                      command(*mifare, "read", "Read a block (-b) or a whole sector (-s)", action, mifare_read),
                      command(*mifare, "write", "Write a block (-b) with 16 bytes (-d)", action, mifare_write),
                      command(*mifare, "value", "Show a value block (-b), after --init, --inc or --dec", action,
                              mifare_value)}) {
        sub->add_option("-s,--sector", options.sector, "Sector, 0 to 15")->check(CLI::Range(0, 15));
        sub->add_option("-b,--block", options.block, "Block, 0 to 63")->check(CLI::Range(0, 63));
        sub->add_option("-k,--key", options.key, "Key, 6 bytes in hexadecimal (default FFFFFFFFFFFF)");
        sub->add_flag("-B,--key-b", options.use_key_b, "Authenticate with key B (default key A)");
        sub->add_option("-d,--data", options.data, "Data to write, 16 bytes in hexadecimal");
        sub->add_option("--init", options.init, "Make the block a value block holding this value");
        sub->add_option("--inc", options.increment, "Increment the value by this amount");
        sub->add_option("--dec", options.decrement, "Decrement the value by this amount");
    }

    auto* ultralight = app.add_subcommand("ultralight", "Ultralight-class cards: read, write and lock pages");
    ultralight->require_subcommand(1);
    for (auto* sub : {command(*ultralight, "read", "Read pages from -p (-n of them)", action, ultralight_read),
                      command(*ultralight, "write", "Write 4 bytes (-d) to page -p", action, ultralight_write),
                      command(*ultralight, "lock", "Set the lock bit of page -p, for good", action, ultralight_lock)}) {
        sub->add_option("-p,--page", options.page, "Page")->check(CLI::Range(0, 255));
        sub->add_option("-n,--pages", options.pages, "Number of pages to read")->check(CLI::Range(1, 256));
        sub->add_option("-k,--key", options.key, "Authenticate first with this 16-byte key in hexadecimal");
        sub->add_option("-d,--data", options.data, "Data to write, 4 bytes in hexadecimal");
    }

    auto* ntag = app.add_subcommand("ntag", "NTAG215 tags: personalise, read and write");
    ntag->require_subcommand(1);
    auto* init = command(*ntag, "init", "Set a new password (-k) and write and lock the text (-t)", action, ntag_init);
    init->add_option("-t,--text", options.text, "Base information text, up to 192 bytes")->required();
    for (auto* sub : {init, command(*ntag, "read", "Read the base information text, or pages from -p", action,
                                    ntag_read),
                      command(*ntag, "write", "Write 4 bytes (-d) to page -p", action, ntag_write)}) {
        sub->add_option("-k,--key", options.key, "Password, 4 bytes in hexadecimal");
        sub->add_option("-p,--page", options.page, "Page")->check(CLI::Range(0, 255));
        sub->add_option("-n,--pages", options.pages, "Number of pages to read from -p")->check(CLI::Range(1, 256));
        sub->add_option("-d,--data", options.data, "Data to write, 4 bytes in hexadecimal");
    }
}

}  // namespace qzctl
