#include <gtest/gtest.h>

#include <stdexcept>

#include "sim/core/status.h"
#include "sim/core/terminal.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::hex;

// Takes the commands whose body starts with `mark` and answers with `tag`.
class MarkedModel final : public DeviceModel {
public:
    MarkedModel(Route route, std::uint8_t mark, std::uint8_t tag) : route_(std::move(route)), mark_(mark), tag_(tag) {}
    std::vector<Route> routes() const override { return {route_}; }
    bool takes(const Command& command) const override {
        return !command.body().empty() && command.body()[0] == mark_;
    }
    Reply handle(const Command&) override { return {status::ok, {tag_}}; }

private:
    Route route_;
    std::uint8_t mark_;
    std::uint8_t tag_;
};

TEST(SharedRoute, SharerIsAskedFirstAndTheOwnerGetsTheRest) {
    Terminal terminal;
    terminal.add_model(std::make_unique<MarkedModel>(Route{0x50, {0x01}}, 0x00, 0xA0));
    terminal.add_model(std::make_unique<MarkedModel>(Route{0x50, {0x01}, true}, 0x77, 0xB0));
    terminal.add_model(std::make_unique<MarkedModel>(Route{0x50, {0x01}, true}, 0x78, 0xC0));
    EXPECT_EQ(terminal.execute(hex("50 01 77")).data, hex("B0"));
    EXPECT_EQ(terminal.execute(hex("50 01 78")).data, hex("C0"));
    EXPECT_EQ(terminal.execute(hex("50 01 00")).data, hex("A0"));
    EXPECT_EQ(terminal.execute(hex("50 02 77")).status, status::instruction_unknown);
}

TEST(SharedRoute, ListsItsInstructions) {
    Terminal terminal;
    EXPECT_THROW(terminal.add_model(std::make_unique<MarkedModel>(Route{0x50, {}, true}, 0, 0)), std::logic_error);
}

}  // namespace
}  // namespace qz::sim
