// The payment application of a bank card, driven by its data: a payment
// directory (PSE or PPSE) that lists the applications, applications with their
// FCI and PDOL, GET PROCESSING OPTIONS in format 1 (80) or 2 (77), and records
// by SFI and number.
//
//   00 A4 04 P2 Lc name   SELECT by DF name; a name matches every DF name it begins
//                         (right truncation); P2 00 first, 02 next occurrence, 0C no FCI
//   00 B2 rec P2          READ RECORD, P2 = SFI << 3 | 4, in the DF selected
//   80 A8 00 00 Lc 83 ..  GET PROCESSING OPTIONS, once after selecting an application;
//                         the data must be as long as the PDOL asks (6700 otherwise)
//
// Refusals as cards give them: 6A82 no such DF or SFI, 6A83 no such record, 6985
// READ RECORD with nothing selected or GET PROCESSING OPTIONS out of turn, 6A86
// parameters it does not take, 6A80 GPO data not in template 83, 6D00/6E00 an
// instruction or class it does not know; a record may be set to be refused.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "sim/models/cards/iso7816_card.h"

namespace qz::sim {

struct EmvRecord {
    std::uint8_t sfi = 1;
    std::uint8_t number = 1;
    std::vector<std::uint8_t> content;     // what READ RECORD answers, template 70 included
    std::optional<std::uint16_t> refusal;  // the status word the card answers instead
};

enum class GpoFormat { format_1, format_2 };

struct EmvApplication {
    std::vector<std::uint8_t> aid;
    std::vector<std::uint8_t> label;                // tag 50, left out when empty
    std::optional<std::uint8_t> priority;           // tag 87
    std::optional<std::vector<std::uint8_t>> pdol;  // tag 9F38
    std::vector<std::uint8_t> fci_extra;            // further data objects of the FCI template A5
    GpoFormat gpo_format = GpoFormat::format_1;
    std::vector<std::uint8_t> aip{0x00, 0x00};
    std::vector<std::uint8_t> afl;
    std::vector<std::uint8_t> gpo_extra;  // format 2: data objects behind 82 and 94
    std::vector<EmvRecord> records;
};

struct EmvDirectory {
    std::vector<std::uint8_t> name;
    // Entries (template 61) in record 1 of this SFI, named by tag 88 in the FCI;
    // nothing: the entries stand in the FCI itself (template BF0C), as on a PPSE.
    std::optional<std::uint8_t> sfi;
    std::vector<std::uint8_t> fci_extra;
};

struct EmvCardData {
    std::optional<EmvDirectory> directory;  // nothing: the card has none (SELECT gives 6A82)
    std::vector<EmvApplication> applications;
};

class EmvCard final : public CardApplication {
public:
    explicit EmvCard(const EmvCardData& data);

    CardResponse process(const Apdu& apdu) override;
    void reset() override;

private:
    // The directory and the applications as the card holds them: a DF name, its
    // FCI, its records, and for an application the answer to GPO and the length
    // of data its PDOL asks for.
    struct DedicatedFile {
        std::vector<std::uint8_t> name;
        std::vector<std::uint8_t> fci;
        std::vector<EmvRecord> records;
        std::optional<std::vector<std::uint8_t>> processing_options;
        std::size_t pdol_data_length = 0;
    };

    CardResponse select(const Apdu& apdu);
    CardResponse read_record(const Apdu& apdu);
    CardResponse get_processing_options(const Apdu& apdu);

    std::vector<DedicatedFile> files_;  // the directory first, then the applications in card order
    std::optional<std::size_t> selected_;
    bool processing_started_ = false;
};

}  // namespace qz::sim
