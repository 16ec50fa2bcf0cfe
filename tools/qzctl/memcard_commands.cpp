// Contact memory cards: which kind sits in a slot, reading with a hex dump,
// writing, and the check and change of the card's code.
#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "hex_dump.h"
#include "qz_32.h"
#include "status_text.h"

namespace qzctl {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr int slot_count = 5;
// Each 256-byte chunk of an SLE4428 read gets 256 bytes of room.
constexpr std::size_t read_room = 2048;

// One kind of memory card: its size and how each operation reaches it.
// `zone` counts only for the AT88SC102 (1, 2) and the AT88SC1604 (0..5).
struct Family {
    const char* name;
    unsigned addresses;        // offsets run below this
    unsigned size;             // bytes a read covers by default, from 0
    int default_zone;
    std::size_t code_length;   // 0: the card has no code
    int (*read)(int, int zone, unsigned offset, unsigned length, unsigned char* out);
    int (*write)(int, int zone, unsigned offset, unsigned length, const unsigned char* data);
    int (*check)(int, int zone, const unsigned char* code);
    int (*change)(int, int zone, const unsigned char* code);
    int (*tries)(int, unsigned char* out);  // nullptr: no counter to read
};

unsigned char byte(unsigned value) { return static_cast<unsigned char>(value); }
unsigned short word(unsigned value) { return static_cast<unsigned short>(value); }

const std::map<std::string, Family> families{
    {"sle4442",
     {"SLE4442", 256, 256, 0, 3,
      [](int d, int, unsigned o, unsigned l, unsigned char* out) { return sle4442_read(d, byte(o), word(l), out); },
      [](int d, int, unsigned o, unsigned l, const unsigned char* in) { return sle4442_write(d, byte(o), word(l), in); },
      [](int d, int, const unsigned char* c) { return sle4442_pwd_check(d, c); },
      [](int d, int, const unsigned char* c) { return sle4442_pwd_modify(d, c); }, sle4442_errcount_read}},
    {"sle4428",
     {"SLE4428", 1024, 1024, 0, 2,
      [](int d, int, unsigned o, unsigned l, unsigned char* out) { return sle4428_read(d, word(o), word(l), out); },
      [](int d, int, unsigned o, unsigned l, const unsigned char* in) { return sle4428_write(d, word(o), word(l), in); },
      [](int d, int, const unsigned char* c) { return sle4428_pwd_check(d, c); },
      [](int d, int, const unsigned char* c) { return sle4428_pwd_modify(d, c); }, sle4428_errcount_read}},
    {"at88sc102",
     {"AT88SC102", 64, 64, 1, 2,
      [](int d, int z, unsigned o, unsigned l, unsigned char* out) {
          return z == 2 ? at88sc102_ua2_readdata(d, byte(o), byte(l), out) : at88sc102_ua1_readdata(d, byte(o), byte(l), out);
      },
      [](int d, int z, unsigned o, unsigned l, const unsigned char* in) {
          return z == 2 ? at88sc102_ua2_modifydata(d, 1, byte(o), byte(l), in)
                        : at88sc102_ua1_modifydata(d, byte(o), byte(l), in);
      },
      [](int d, int, const unsigned char* c) { return at88sc102_pwd_check(d, c); },
      [](int d, int, const unsigned char* c) { return at88sc102_pwd_modify(d, c); }, at88sc102_pwd_errorcount}},
    {"at88sc1604",
     {"AT88SC1604", 2007, 21, 0, 2,
      [](int d, int z, unsigned o, unsigned l, unsigned char* out) {
          return srd_1604(d, z, static_cast<int>(o), static_cast<int>(l), out);
      },
      [](int d, int z, unsigned o, unsigned l, const unsigned char* in) {
          return swr_1604(d, z, static_cast<int>(o), static_cast<int>(l), in);
      },
      [](int d, int z, const unsigned char* c) { return csc_1604(d, z, 2, c); },
      [](int d, int z, const unsigned char* c) { return wsc_1604(d, z, 2, c); }, nullptr}},
    {"at24c01a",
     {"AT24C01A", 128, 127, 0, 0,
      [](int d, int, unsigned o, unsigned l, unsigned char* out) { return at24c01a_read(d, word(o), word(l), out); },
      [](int d, int, unsigned o, unsigned l, const unsigned char* in) {
          return at24c01a_write(d, word(o), word(l), in);
      },
      nullptr, nullptr, nullptr}},
};

struct MemcardOptions {
    int slot = 0;
    std::string type;
    std::optional<int> zone;
    unsigned offset = 0;
    std::optional<unsigned> length;
    std::string data;
    std::string code;
    std::string new_code;
};
MemcardOptions options;

const Family& family() { return families.at(options.type); }
int zone() { return options.zone.value_or(family().default_zone); }

// The offset, once it and `length` bytes from it lie on the card.
unsigned checked_offset(std::size_t length) {
    if (options.offset >= family().addresses || length > family().addresses - options.offset)
        throw Failure(exit_usage, std::string(family().name) + " cards hold addresses 0 to " +
                                      std::to_string(family().addresses - 1));
    return options.offset;
}

// A code given in hexadecimal, of the length the card's codes have.
Bytes code_of(const std::string& text, const char* what) {
    const Family& f = family();
    if (f.check == nullptr) throw Failure(exit_usage, std::string(f.name) + " cards have no code");
    Bytes code = hex_bytes(text, what);
    if (code.size() != f.code_length)
        throw Failure(exit_usage, std::string(f.name) + " codes are " + std::to_string(f.code_length) + " bytes");
    return code;
}

void select_slot(int device) {
    Session::check(contact_select(device, static_cast<unsigned char>(options.slot)),
                   "selecting slot " + std::to_string(options.slot));
}

// Selects the slot and, when a code is given, presents it.
int open_card(Session& session) {
    const Bytes code = options.code.empty() ? Bytes{} : code_of(options.code, "--key");
    const int device = session.device();
    select_slot(device);
    if (!code.empty()) Session::check(family().check(device, zone(), code.data()), "presenting the code");
    return device;
}

void detect(Session& session, Output& out) {
    const int device = session.device();
    select_slot(device);
    unsigned char type = 0;
    const int result = contact_verify(device, &type);
    out.add("slot", "Slot", options.slot);
    if (result == -20) {
        out.add("type", "Type", "unknown");
        return;
    }
    Session::check(result, "asking for the card type");
    const std::map<unsigned char, std::string> names{{3, "SLE4428"},
                                                     {4, "SLE4442"},
                                                     {5, "another memory card (AT88SC102, AT88SC1604, AT24C01A)"},
                                                     {0xFF, "none (all zeros or all ones)"}};
    out.add("type_code", "Type code", type);
    out.add("type", "Type", names.contains(type) ? names.at(type) : "code " + std::to_string(type));
}

void read_memory(Session& session, Output& out) {
    const Family& f = family();
    const unsigned length = options.length.value_or(f.size - std::min(options.offset, f.size));
    if (length == 0 || length > read_room / 2) throw Failure(exit_usage, "read 1 to 1024 bytes");
    const unsigned offset = checked_offset(length);
    const int device = open_card(session);
    Bytes bytes(read_room);
    Session::check(f.read(device, zone(), offset, length, bytes.data()), "reading the card");
    bytes.resize(length);
    out.add("offset", "Offset", offset);
    out.add("data", "Data", out.json() ? nlohmann::ordered_json(to_hex(bytes.data(), length))
                                       : nlohmann::ordered_json(hex_dump(bytes, offset)));
}

void write_memory(Session& session, Output& out) {
    const Bytes bytes = hex_bytes(options.data, "--data");
    const unsigned offset = checked_offset(bytes.size());
    const int device = open_card(session);
    Session::check(family().write(device, zone(), offset, static_cast<unsigned>(bytes.size()),
                                  bytes.data()),
                   "writing the card");
    out.add("written", "Bytes written", bytes.size());
}

void code(Session& session, Output& out) {
    const Family& f = family();
    const Bytes given = code_of(options.code, "--key");
    const Bytes fresh = options.new_code.empty() ? Bytes{} : code_of(options.new_code, "--new");
    const int device = session.device();
    select_slot(device);
    const int result = f.check(device, zone(), given.data());
    std::optional<int> tries_left;
    unsigned char left = 0;
    if (f.tries != nullptr && f.tries(device, &left) == 0) tries_left = left;
    const std::string tries_text = tries_left ? "; tries left: " + std::to_string(*tries_left) : "";
    if (result != 0) throw Failure(exit_command_failed, "the code was refused: " + status_text(result) + tries_text);
    out.add("accepted", "Code accepted", true);
    if (tries_left) out.add("tries_left", "Tries left", *tries_left);
    if (fresh.empty()) return;
    Session::check(f.change(device, zone(), fresh.data()), "changing the code");
    out.add("changed", "Code changed", true);
}

}  // namespace

void add_memcard_commands(CLI::App& app, Action& action) {
    auto* memcard = app.add_subcommand("memcard", "Contact memory cards: detect, read, write, code check and change");
    memcard->require_subcommand(1);
    std::vector<std::string> names;
    for (const auto& [name, f] : families) names.push_back(name);

    const auto common = [&](CLI::App* command, bool typed) {
        command->add_option("-s,--slot", options.slot, "Contact slot (0-4, default 0)")->check(CLI::Range(0, slot_count - 1));
        if (!typed) return;
        command->add_option("-t,--type", options.type, "Card type")->required()->check(CLI::IsMember(names));
        command->add_option("-z,--zone", options.zone, "Zone: AT88SC102 1 or 2 (default 1), AT88SC1604 0-5 (default 0)")
            ->check(CLI::Range(0, 5));
    };

    auto* detect_command = memcard->add_subcommand("detect", "Tell which kind of memory card is in the slot");
    common(detect_command, false);
    detect_command->callback([&action] { action = detect; });

    auto* read = memcard->add_subcommand("read", "Read and print the card's memory, 16 bytes a row");
    common(read, true);
    read->add_option("-o,--offset", options.offset, "First address (default 0)");
    read->add_option("-l,--length", options.length, "Byte count (default: to the end of the card or zone)");
    read->add_option("-k,--key", options.code, "Present this code first (hexadecimal)");
    read->callback([&action] { action = read_memory; });

    auto* write = memcard->add_subcommand("write", "Write hexadecimal DATA at OFFSET");
    common(write, true);
    write->add_option("-o,--offset", options.offset, "First address")->required();
    write->add_option("-d,--data", options.data, "Bytes in hexadecimal")->required();
    write->add_option("-k,--key", options.code, "Present this code first (hexadecimal)");
    write->callback([&action] { action = write_memory; });

    auto* code_command = memcard->add_subcommand("code", "Present the card's code (PSC), print the tries left, optionally change it");
    common(code_command, true);
    code_command->add_option("-k,--key", options.code, "The code (hexadecimal)")->required();
    code_command->add_option("-n,--new", options.new_code, "Then change it to this code");
    code_command->callback([&action] { action = code; });
}

}  // namespace qzctl
