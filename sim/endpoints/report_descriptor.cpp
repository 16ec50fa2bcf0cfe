#include "sim/endpoints/report_descriptor.h"

#include "sim/endpoints/hid_endpoint.h"

namespace qz::sim {

std::vector<std::uint8_t> report_descriptor(std::uint16_t report_length) {
    const auto count = static_cast<std::uint16_t>(report_length - 1);
    return {
        0x06, 0x00, 0xFF,        // usage page: vendor defined 0xFF00
        0x09, 0x01,              // usage 1
        0xA1, 0x01,              // collection: application
        0x85, feature_report_id, //   report id
        0x15, 0x00,              //   logical minimum 0
        0x26, 0xFF, 0x00,        //   logical maximum 255
        0x75, 0x08,              //   report size: 8 bits
        0x96, static_cast<std::uint8_t>(count), static_cast<std::uint8_t>(count >> 8),  // report count
        0x09, 0x01,              //   usage 1
        0xB1, 0x02,              //   feature: data, variable, absolute
        0xC0,                    // end collection
    };
}

}  // namespace qz::sim
