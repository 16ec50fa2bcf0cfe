// Microprocessor cards: the answers to reset and to select, APDUs to a card in a
// slot or in the field, and a bank card's PAN and holder's name.
#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "qz_32.h"
#include "status_text.h"
#include "terminal_text.h"

namespace qzctl {
namespace {

constexpr int slot_count = 5;
// Reply areas as large as the library's exchanges can fill.
constexpr std::size_t contact_response_room = 1024;
constexpr std::size_t contactless_response_room = 300;
constexpr std::size_t answer_room = 256;
// A PAN from track 2 data comes as hexadecimal text, a name up to 500 bytes.
constexpr std::size_t pan_room = 1024;
constexpr std::size_t name_room = 1024;

// The bank card reading's own results.
constexpr int walk_refused = -19;
constexpr int walk_tag_missing = -21;

// Card state values for which the library reads the contact slot 0.
constexpr std::array<unsigned char, 2> contact_card_states{0, 2};

struct CardOptions {
    int slot = 0;
    bool contactless = false;
    std::vector<std::string> apdus;
    std::optional<int> contact_slot;  // pan: --contact [SLOT]
};
CardOptions options;

using Bytes = std::vector<unsigned char>;

// Hexadecimal with blanks or colons between the bytes allowed: "00 A4 04 00", "00:a4".
Bytes parse_apdu(const std::string& text) {
    std::string digits;
    for (char c : text)
        if (c != ' ' && c != ':') digits += c;
    const bool hex =
        std::all_of(digits.begin(), digits.end(), [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); });
    if (!hex || digits.size() < 8 || digits.size() % 2 != 0)
        throw Failure(exit_usage, "an APDU is at least 4 bytes in hexadecimal: " + text);
    Bytes bytes(digits.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(std::stoul(digits.substr(2 * i, 2), nullptr, 16));
    return bytes;
}

// An open card session that ends (power down, or the card let go) when the command is done.
class CardSession {
public:
    // `slot` nothing: the contactless card.
    CardSession(int device, std::optional<int> slot) : device_(device), slot_(slot) {}
    ~CardSession() {
        if (slot_)
            ICC_PowerOff(device_, static_cast<unsigned char>(*slot_));
        else
            CloseCard(device_);
    }
    CardSession(const CardSession&) = delete;
    CardSession& operator=(const CardSession&) = delete;

private:
    int device_;
    std::optional<int> slot_;
};

std::string slot_name(int slot) { return "slot " + std::to_string(slot); }

void print_atr(Session& session, Output& out) {
    const int device = session.device();
    std::array<unsigned char, answer_room> atr{};
    unsigned char length = 0;
    const auto slot = static_cast<unsigned char>(options.slot);
    Session::check(ICC_PowerOn(device, slot, atr.data(), &length),
                   "powering on the card in " + slot_name(options.slot));
    const CardSession card(device, options.slot);
    out.add("slot", "Slot", options.slot);
    out.add("atr", "ATR", to_hex(atr.data(), length));
}

void print_ats(Session& session, Output& out) {
    const int device = session.device();
    // Hexadecimal texts with terminators: a UID of up to 10 bytes, an ATS of up to 255.
    std::array<char, 2 * answer_room + 1> uid{};
    std::array<char, 2 * answer_room + 1> ats{};
    unsigned char length = 0;
    Session::check(OpenCard_hex(device, 0, uid.data(), ats.data(), &length), "activating the contactless card");
    const CardSession card(device, std::nullopt);
    out.add("uid", "UID", std::string(uid.data()));
    out.add("ats", "ATS", std::string(ats.data(), length));
}

struct Exchange {
    std::string command;
    std::string data;
    std::optional<unsigned> status_word;  // nothing: the card's reply had no status words
};

std::string status_word_hex(unsigned status_word) {
    char text[8];
    std::snprintf(text, sizeof text, "%04X", status_word);
    return text;
}

void print_exchanges(const std::vector<Exchange>& exchanges, Output& out) {
    if (out.json()) {
        nlohmann::ordered_json list = nlohmann::ordered_json::array();
        for (const Exchange& exchange : exchanges) {
            nlohmann::ordered_json item{{"command", exchange.command}, {"data", exchange.data}};
            if (exchange.status_word) {
                item["sw"] = status_word_hex(*exchange.status_word);
                item["meaning"] = status_word_meaning(*exchange.status_word);
            }
            list.push_back(std::move(item));
        }
        out.add("exchanges", "Exchanges", std::move(list));
        return;
    }
    for (const Exchange& exchange : exchanges) {
        out.add("command", "Command", exchange.command);
        if (!exchange.data.empty()) out.add("data", "Data", exchange.data);
        out.add("status", "Status",
                exchange.status_word
                    ? status_word_hex(*exchange.status_word) + " " + status_word_meaning(*exchange.status_word)
                    : "no status words");
    }
}

Exchange split_response(const Bytes& command, const unsigned char* response, std::size_t length) {
    Exchange exchange{to_hex(command.data(), command.size()), {}, std::nullopt};
    if (length < 2) {
        exchange.data = to_hex(response, length);
        return exchange;
    }
    exchange.data = to_hex(response, length - 2);
    exchange.status_word = static_cast<unsigned>(response[length - 2] << 8 | response[length - 1]);
    return exchange;
}

void send_apdus(Session& session, Output& out) {
    std::vector<Bytes> commands;
    for (const std::string& text : options.apdus) commands.push_back(parse_apdu(text));
    const int device = session.device();
    std::vector<Exchange> exchanges;

    if (options.contactless) {
        std::array<unsigned char, answer_room> uid{};
        std::array<unsigned char, answer_room> ats{};
        unsigned char ats_length = 0;
        Session::check(OpenCard(device, 0, uid.data(), ats.data(), &ats_length), "activating the contactless card");
        const CardSession card(device, std::nullopt);
        for (const Bytes& command : commands) {
            std::array<unsigned char, contactless_response_room> response{};
            unsigned short length = 0;
            Session::check(ExchangePro(device, command.data(), static_cast<unsigned short>(command.size()),
                                       response.data(), &length),
                           "sending " + to_hex(command.data(), command.size()));
            exchanges.push_back(split_response(command, response.data(), length));
        }
    } else {
        const auto slot = static_cast<unsigned char>(options.slot);
        std::array<unsigned char, answer_room> atr{};
        unsigned char atr_length = 0;
        Session::check(ICC_PowerOn(device, slot, atr.data(), &atr_length),
                       "powering on the card in " + slot_name(options.slot));
        const CardSession card(device, options.slot);
        for (const Bytes& command : commands) {
            std::array<unsigned char, contact_response_room> response{};
            unsigned short length = 0;
            Session::check(ICC_CommandExchange(device, slot, command.data(),
                                               static_cast<unsigned short>(command.size()), response.data(), &length),
                           "sending " + to_hex(command.data(), command.size()));
            exchanges.push_back(split_response(command, response.data(), length));
        }
    }
    print_exchanges(exchanges, out);
}

std::string walk_failure(int result) {
    if (result == walk_refused)
        return "the card refused a SELECT, the directory record or GET PROCESSING OPTIONS (" + std::to_string(result) +
               ")";
    if (result == walk_tag_missing)
        return "a tag the reading needs is missing, or the records gave no PAN and name (" + std::to_string(result) +
               ")";
    return status_text(result);
}

void print_pan(Session& session, Output& out) {
    const int device = session.device();
    std::optional<int> slot = options.contact_slot;  // nothing: contactless
    if (!options.contactless && !slot) {
        // The library chooses by the card state; ask it too, to name the path and end its session.
        unsigned char state = 0;
        const bool contact =
            dev_cardstate(device, &state) == 0 &&
            std::find(contact_card_states.begin(), contact_card_states.end(), state) != contact_card_states.end();
        if (contact) slot = 0;
    }

    std::array<unsigned char, pan_room> pan{};
    std::array<unsigned char, name_room> name{};
    unsigned short pan_length = 0;
    unsigned short name_length = 0;
    int result = 0;
    if (options.contactless)
        result = NC_GetPanNoCardHldName(device, pan.data(), &pan_length, name.data(), &name_length);
    else if (options.contact_slot)
        result = ICC_GetPanNoCardHldName(device, static_cast<unsigned char>(*options.contact_slot), pan.data(),
                                         &pan_length, name.data(), &name_length);
    else
        result = GetPanNoCardHldName(device, pan.data(), &pan_length, name.data(), &name_length);
    // The reading leaves the card open, also when it fails after opening it.
    const CardSession card(device, slot);
    if (result != 0) throw Failure(exit_command_failed, "reading the PAN and name failed: " + walk_failure(result));

    const std::string holder(reinterpret_cast<const char*>(name.data()), name_length);
    out.add("interface", "Interface", slot ? "contact " + slot_name(*slot) : std::string("contactless"));
    out.add("pan", "PAN", std::string(reinterpret_cast<const char*>(pan.data()), pan_length));
    out.add("name", "Name", out.json() ? gbk_to_utf8(holder) : gbk_to_terminal(holder));
    out.add("name_hex", "Name (hex)", to_hex(name.data(), name_length));
}

}  // namespace

void add_card_commands(CLI::App& app, Action& action) {
    const auto slot_option = [](CLI::App* command) {
        return command->add_option("-s,--slot", options.slot, "Contact slot (0-4, default 0)")
            ->check(CLI::Range(0, slot_count - 1));
    };

    auto* atr = app.add_subcommand("atr", "Power on the card in a contact slot and print its answer to reset");
    slot_option(atr);
    atr->callback([&action] { action = print_atr; });

    app.add_subcommand("ats", "Activate the contactless card and print its UID and answer to select")
        ->callback([&action] { action = print_ats; });

    auto* apdu = app.add_subcommand("apdu", "Send APDUs to a card and print the responses and status words");
    auto* slot = slot_option(apdu);
    apdu->add_flag("-c,--contactless", options.contactless, "The card in the contactless field")->excludes(slot);
    apdu->add_option("-d,--data", options.apdus, "An APDU in hexadecimal (repeatable, sent in order)")
        ->required()
        ->type_name("HEX");
    apdu->callback([&action] { action = send_apdus; });

    auto* pan = app.add_subcommand("pan", "Read a bank card's PAN and holder's name (by the card state by default)");
    auto* contact = pan->add_option("--contact", options.contact_slot, "The card in a contact slot (default 0)")
                        ->expected(0, 1)
                        ->default_str("0")
                        ->type_name("[SLOT]")
                        ->check(CLI::Range(0, slot_count - 1));
    pan->add_flag("--contactless", options.contactless, "The card in the contactless field")->excludes(contact);
    pan->callback([&action] { action = print_pan; });
}

}  // namespace qzctl
