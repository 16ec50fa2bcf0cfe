#include "sim/core/terminal.h"

#include <gtest/gtest.h>

#include "sim/models/control/control_model.h"
#include "sim/core/status.h"
#include "sim_test_helpers.h"

namespace qz::sim {
namespace {

using test::Bytes;
using test::hex;

// Answers its routes with one byte that names it.
class TaggedModel final : public DeviceModel {
public:
    TaggedModel(std::vector<Route> routes, std::uint8_t tag) : routes_(std::move(routes)), tag_(tag) {}
    std::vector<Route> routes() const override { return routes_; }
    Reply handle(const Command&) override { return {status::ok, {tag_}}; }

private:
    std::vector<Route> routes_;
    std::uint8_t tag_;
};

TEST(Terminal, ModelsShareAClassByInstruction) {
    // A further model of class 0x00 (as the line LCD will be) beside the control model.
    const auto terminal = make_terminal(Scenario{});
    terminal->add_model(std::make_unique<TaggedModel>(std::vector<Route>{{0x00, {0x20, 0x21}}}, 0xA1));
    terminal->add_model(std::make_unique<TaggedModel>(std::vector<Route>{{0xCD, {}}}, 0xA2));
    EXPECT_EQ(terminal->execute(hex("00 21 00")).data, hex("A1"));
    EXPECT_EQ(terminal->execute(hex("00 07 00")).status, status::ok);
    EXPECT_EQ(terminal->execute(hex("00 22 00")).status, status::instruction_unknown);
    EXPECT_EQ(terminal->execute(hex("CD 99")).data, hex("A2"));
    EXPECT_EQ(terminal->execute(hex("CE 01")).status, status::class_unknown);
    EXPECT_NE(terminal->model<ControlModel>(), nullptr);
    EXPECT_EQ(terminal->model<test::EchoModel>(), nullptr);
}

TEST(Terminal, ARouteIsServedOnce) {
    const auto terminal = make_terminal(Scenario{});
    const std::vector<std::vector<Route>> refused = {
        {{0x00, {0x01}}},                    // an instruction the control model holds
        {{0x00, {}}},                        // the whole class
        {{0xC1, {}}, {0x00, {0x07}}},        // a free route, then a taken one
    };
    for (const auto& routes : refused)
        EXPECT_THROW(terminal->add_model(std::make_unique<TaggedModel>(routes, 0xEE)), std::logic_error);
    // Nothing of the refused models stayed behind.
    EXPECT_EQ(terminal->execute(hex("C1 01")).status, status::class_unknown);

    terminal->add_model(std::make_unique<TaggedModel>(std::vector<Route>{{0xC1, {}}}, 0xB1));
    EXPECT_THROW(terminal->add_model(std::make_unique<TaggedModel>(std::vector<Route>{{0xC1, {0x05}}}, 0xB2)),
                 std::logic_error);
    EXPECT_EQ(terminal->execute(hex("C1 05")).data, hex("B1"));
}

}  // namespace
}  // namespace qz::sim
