// The keyboard behind the terminal, reached through class 0xC5 instruction 0x0F
// with parameter 0 and the keyboard's message. Messages that begin with ESC 'H'
// belong to the barcode scanner. The keyboard runs its firmware or its loader.
//
// Firmware: ESC "KTLVN" gives 02, the version text, 03; ESC "UPDATE" starts the
// loader. The loader takes inner frames (STX, length big-endian, payload, XOR of
// the payload, ETX) and answers with one:
//
//   00 01 00        version: 00 01 00, the loader's text, status 00 00, and the
//                   largest image it takes, 3 bytes big-endian
//   00 D0 n data    package n (low 8 bits): package 0 holds the image's length,
//                   4 bytes big-endian; packages 1, 2, ... the image in order.
//                   Answer: status (2 bytes) and n. A package out of order, a
//                   damaged frame or more data than the head announced is refused
//                   and not kept.
//
// Once the image is whole the loader keeps it as the new firmware and restarts
// it, which then reports `new_version`. Faults: package `refuse_package` is
// refused `refusals` times; after package `silent_after_package` the loader never
// answers again.
//
//   "keyboard": { "version": "QZKB V1.00", "loader_version": "QZKB IAP V1.0",
//                 "new_version": "QZKB V2.00", "in_loader": false, "capacity": 262144,
//                 "refuse_package": 3, "refusals": 2, "silent_after_package": 5 }
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "sim/core/terminal.h"

namespace qz::sim {

struct KeyboardConfig {
    std::string version = "QZKB V1.00";
    std::string loader_version = "QZKB IAP V1.0";
    std::string new_version = "QZKB V2.00";
    bool in_loader = false;
    std::uint32_t capacity = 0x100000;
    std::optional<unsigned> refuse_package;
    unsigned refusals = 2;
    std::optional<unsigned> silent_after_package;
};

KeyboardConfig parse_keyboard(const nlohmann::json& document);

class KeyboardModel final : public DeviceModel {
public:
    explicit KeyboardModel(KeyboardConfig config) : config_(std::move(config)) {}

    std::vector<Route> routes() const override;
    bool takes(const Command& command) const override;
    Reply handle(const Command& command) override;

    bool in_loader() const { return config_.in_loader; }
    // The last image the loader took whole.
    const std::vector<std::uint8_t>& firmware_image() const { return firmware_image_; }
    // Every package the loader was sent, by number, in order.
    const std::vector<unsigned>& packages_seen() const { return packages_seen_; }

private:
    Reply firmware(std::span<const std::uint8_t> message);
    Reply loader(std::span<const std::uint8_t> message);
    std::uint16_t take_package(std::span<const std::uint8_t> package);

    KeyboardConfig config_;
    std::optional<std::uint32_t> announced_;
    std::vector<std::uint8_t> image_;
    unsigned next_package_ = 1;  // counted on, not wrapped
    std::vector<std::uint8_t> firmware_image_;
    std::vector<unsigned> packages_seen_;
    bool silent_ = false;
};

}  // namespace qz::sim
