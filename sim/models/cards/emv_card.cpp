#include "sim/models/cards/emv_card.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "sim/models/cards/ber_tlv.h"

namespace qz::sim {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t tag_fci = 0x6F;
constexpr std::uint8_t tag_df_name = 0x84;
constexpr std::uint8_t tag_fci_proprietary = 0xA5;
constexpr std::uint16_t tag_fci_discretionary = 0xBF0C;
constexpr std::uint8_t tag_sfi = 0x88;
constexpr std::uint8_t tag_directory_entry = 0x61;
constexpr std::uint8_t tag_aid = 0x4F;
constexpr std::uint8_t tag_label = 0x50;
constexpr std::uint8_t tag_priority = 0x87;
constexpr std::uint16_t tag_pdol = 0x9F38;
constexpr std::uint8_t tag_record = 0x70;
constexpr std::uint8_t tag_gpo_format_1 = 0x80;
constexpr std::uint8_t tag_gpo_format_2 = 0x77;
constexpr std::uint8_t tag_aip = 0x82;
constexpr std::uint8_t tag_afl = 0x94;
constexpr std::uint8_t tag_pdol_data = 0x83;

constexpr std::uint8_t select_by_name = 0x04;
constexpr std::uint8_t occurrence_bits = 0x03;
constexpr std::uint8_t first_occurrence = 0x00;
constexpr std::uint8_t next_occurrence = 0x02;
constexpr std::uint8_t answer_bits = 0x0C;
constexpr std::uint8_t answer_fci = 0x00;
constexpr std::uint8_t answer_nothing = 0x0C;
constexpr std::uint8_t record_number_in_p1 = 0x04;

void append(Bytes& to, std::span<const std::uint8_t> bytes) { to.insert(to.end(), bytes.begin(), bytes.end()); }

// Label and priority, as both the directory entry and the FCI give them.
Bytes label_and_priority(const EmvApplication& application) {
    Bytes bytes;
    if (!application.label.empty()) append(bytes, tlv(tag_label, application.label));
    if (application.priority) append(bytes, tlv(tag_priority, std::array{*application.priority}));
    return bytes;
}

Bytes directory_entries(const std::vector<EmvApplication>& applications) {
    Bytes entries;
    for (const EmvApplication& application : applications) {
        Bytes entry = tlv(tag_aid, application.aid);
        append(entry, label_and_priority(application));
        append(entries, tlv(tag_directory_entry, entry));
    }
    return entries;
}

Bytes fci(std::span<const std::uint8_t> name, std::span<const std::uint8_t> proprietary) {
    Bytes content = tlv(tag_df_name, name);
    append(content, tlv(tag_fci_proprietary, proprietary));
    return tlv(tag_fci, content);
}

Bytes processing_options(const EmvApplication& application) {
    if (application.gpo_format == GpoFormat::format_1) {
        Bytes content = application.aip;
        append(content, application.afl);
        return tlv(tag_gpo_format_1, content);
    }
    Bytes content = tlv(tag_aip, application.aip);
    if (!application.afl.empty()) append(content, tlv(tag_afl, application.afl));
    append(content, application.gpo_extra);
    return tlv(tag_gpo_format_2, content);
}

// Template 83 of GPO data: the length its length field declares, and the number
// of bytes that follow it; nothing when the data is no such template.
struct PdolData {
    std::size_t declared;
    std::size_t present;
};

std::optional<PdolData> pdol_data(std::span<const std::uint8_t> data) {
    if (data.size() < 2 || data[0] != tag_pdol_data) return std::nullopt;
    if (data[1] < 0x80) return PdolData{data[1], data.size() - 2};
    if (data[1] == 0x81 && data.size() >= 3) return PdolData{data[2], data.size() - 3};
    return std::nullopt;
}

bool begins_with(std::span<const std::uint8_t> name, std::span<const std::uint8_t> prefix) {
    return prefix.size() <= name.size() && std::equal(prefix.begin(), prefix.end(), name.begin());
}

}  // namespace

EmvCard::EmvCard(const EmvCardData& data) {
    if (data.directory) {
        const EmvDirectory& directory = *data.directory;
        DedicatedFile file{directory.name, {}, {}, std::nullopt, 0};
        Bytes proprietary;
        const Bytes entries = directory_entries(data.applications);
        if (directory.sfi) {
            append(proprietary, tlv(tag_sfi, std::array{*directory.sfi}));
            file.records.push_back({*directory.sfi, 1, tlv(tag_record, entries), std::nullopt});
        } else {
            append(proprietary, tlv(tag_fci_discretionary, entries));
        }
        append(proprietary, directory.fci_extra);
        file.fci = fci(directory.name, proprietary);
        files_.push_back(std::move(file));
    }
    for (const EmvApplication& application : data.applications) {
        Bytes proprietary = label_and_priority(application);
        std::size_t pdol_data_length = 0;
        if (application.pdol) {
            append(proprietary, tlv(tag_pdol, *application.pdol));
            const auto length = dol_length(*application.pdol);
            if (!length) throw std::invalid_argument("PDOL cut short");
            pdol_data_length = *length;
        }
        append(proprietary, application.fci_extra);
        files_.push_back({application.aid, fci(application.aid, proprietary), application.records,
                          processing_options(application), pdol_data_length});
    }
}

void EmvCard::reset() {
    selected_.reset();
    processing_started_ = false;
}

CardResponse EmvCard::process(const Apdu& apdu) {
    struct Command {
        std::uint8_t cla;
        std::uint8_t ins;
        CardResponse (EmvCard::*run)(const Apdu&);
    };
    static constexpr std::array<Command, 3> commands{{
        {0x00, 0xA4, &EmvCard::select},
        {0x00, 0xB2, &EmvCard::read_record},
        {0x80, 0xA8, &EmvCard::get_processing_options},
    }};
    const auto found =
        std::find_if(commands.begin(), commands.end(), [&](const Command& command) { return command.ins == apdu.ins; });
    if (found == commands.end()) return CardResponse::status(card_sw::instruction_not_supported);
    if (found->cla != apdu.cla) return CardResponse::status(card_sw::class_not_supported);
    return (this->*found->run)(apdu);
}

CardResponse EmvCard::select(const Apdu& apdu) {
    const std::uint8_t occurrence = apdu.p2 & occurrence_bits;
    const std::uint8_t answer = apdu.p2 & answer_bits;
    if (apdu.p1 != select_by_name || (apdu.p2 & ~(occurrence_bits | answer_bits)) != 0 ||
        (occurrence != first_occurrence && occurrence != next_occurrence) ||
        (answer != answer_fci && answer != answer_nothing))
        return CardResponse::status(card_sw::incorrect_p1_p2);
    if (!apdu.has_data()) return CardResponse::status(card_sw::file_not_found);

    const std::size_t start = occurrence == next_occurrence && selected_ ? *selected_ + 1 : 0;
    const auto found =
        std::find_if(files_.begin() + static_cast<std::ptrdiff_t>(std::min(start, files_.size())), files_.end(),
                     [&](const DedicatedFile& file) { return begins_with(file.name, apdu.data); });
    if (found == files_.end()) return CardResponse::status(card_sw::file_not_found);
    selected_ = static_cast<std::size_t>(found - files_.begin());
    processing_started_ = false;
    return {answer == answer_fci ? found->fci : Bytes{}, card_sw::success};
}

CardResponse EmvCard::read_record(const Apdu& apdu) {
    const std::uint8_t sfi = apdu.p2 >> 3;
    if ((apdu.p2 & 0x07) != record_number_in_p1 || apdu.p1 == 0 || sfi == 0)
        return CardResponse::status(card_sw::incorrect_p1_p2);
    if (!selected_) return CardResponse::status(card_sw::conditions_not_satisfied);
    const auto& records = files_[*selected_].records;
    if (std::none_of(records.begin(), records.end(), [&](const EmvRecord& record) { return record.sfi == sfi; }))
        return CardResponse::status(card_sw::file_not_found);
    const auto record = std::find_if(records.begin(), records.end(), [&](const EmvRecord& candidate) {
        return candidate.sfi == sfi && candidate.number == apdu.p1;
    });
    if (record == records.end()) return CardResponse::status(card_sw::record_not_found);
    if (record->refusal) return CardResponse::status(*record->refusal);
    return {record->content, card_sw::success};
}

CardResponse EmvCard::get_processing_options(const Apdu& apdu) {
    if (apdu.p1_p2() != 0) return CardResponse::status(card_sw::incorrect_p1_p2);
    if (!selected_ || !files_[*selected_].processing_options || processing_started_)
        return CardResponse::status(card_sw::conditions_not_satisfied);
    const DedicatedFile& application = files_[*selected_];
    const auto data = pdol_data(apdu.data);
    if (!data) return CardResponse::status(card_sw::incorrect_data);
    if (data->declared != data->present || data->present != application.pdol_data_length)
        return CardResponse::status(card_sw::wrong_length);
    processing_started_ = true;
    return {*application.processing_options, card_sw::success};
}

}  // namespace qz::sim
