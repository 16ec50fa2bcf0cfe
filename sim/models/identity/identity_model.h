// The identity card module: it finds, selects and reads the card lying on it and
// answers one command with the whole card; it also gives its own identifier.
//
//   32 50 00  read text and photo        D0 07 00  read text, photo and finger data
//   32 51     the module identifier
//
// Read reply data: the length of what follows (2 bytes, high first), the three
// module status bytes, and on success the text, photo and (D0 07 only) finger
// lengths, high byte first, then the 256-byte text block, the photo and the
// finger data. A failure has the status bytes alone.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sim/models/identity/identity_config.h"
#include "sim/core/terminal.h"

namespace qz::sim {

class IdentityModel final : public DeviceModel {
public:
    explicit IdentityModel(IdentityConfig config);

    std::vector<Route> routes() const override;
    Reply handle(const Command& command) override;

    // Lays a card of the scenario on the module, or takes the card away (nothing);
    // std::out_of_range for a name the scenario does not have.
    void present(std::optional<std::string> card);
    // What the module answers instead of reading; module_ok lets it read.
    void set_status(const ModuleStatus& status) { config_.status = status; }

private:
    enum class Read { text_and_photo, with_finger };

    Reply read(std::span<const std::uint8_t> body, Read what) const;
    Reply module_id(std::span<const std::uint8_t> body) const;
    // The status bytes and what follows them for the card on the module.
    std::vector<std::uint8_t> module_answer(Read what) const;

    IdentityConfig config_;
};

}  // namespace qz::sim
