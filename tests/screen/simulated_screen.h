// The simulated terminal behind the library in this process, for drawing through
// the exports and looking at the simulated screen's pixels.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "link/link_state.h"
#include "qz_32.h"
#include "sim/core/scenario.h"
#include "sim/core/simulator.h"
#include "sim/endpoints/inprocess_platform.h"
#include "sim/models/screen/screen_model.h"

namespace qz::test {

class SimulatedScreen : public ::testing::Test {
protected:
    void SetUp() override {
        terminal = sim::make_terminal(sim::parse_scenario(nlohmann::json::object()));
        os.add_hid_device({.path = "/dev/hidraw0", .terminal = terminal});
        platform::install(&os);
        link::reset_link_state();
        icdev = open_device(0, 115200);
        ASSERT_GT(icdev, 1);
    }
    void TearDown() override {
        if (icdev > 1) close_device(icdev);
        platform::install(nullptr);
        link::reset_link_state();
    }

    sim::ScreenModel& screen() const { return *terminal->model<sim::ScreenModel>(); }
    std::uint16_t pixel(int x, int y) const { return screen().visible().at(x, y); }

    sim::InProcessPlatform os;
    std::shared_ptr<sim::Terminal> terminal;
    int icdev = 0;
};

}  // namespace qz::test
