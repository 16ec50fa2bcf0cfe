// The simulated terminal behind the library in this process, for drawing through
// the exports and looking at the simulated screen's pixels.
#pragma once

#include <gtest/gtest.h>

#include "qz_32.h"
#include "sim/models/screen/screen_model.h"
#include "support/simulated_terminal.h"

namespace qz::test {

class SimulatedScreen : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_GT(icdev, 1); }

    sim::ScreenModel& screen() { return sim.model<sim::ScreenModel>(); }
    std::uint16_t pixel(int x, int y) { return screen().visible().at(x, y); }

    SimulatedTerminal sim{nlohmann::json::object()};
    const int icdev = sim.icdev;
};

}  // namespace qz::test
