// The card transport mechanism: status, moves and tests.
#include <string>

#include "commands.h"
#include "qz_32.h"

namespace qzctl {
namespace {

struct Options {
    std::string direction = "in";
    std::string test = "gate";
    int first = 0;
    int second = 0;
} options;

void status(Session& session, Output& out) {
    unsigned int position = 0;
    Session::check(Query_status(session.device(), &position), "querying the mechanism");
    unsigned char device = 0;
    Session::check(get_device_status(session.device(), &device), "reading the device status");
    out.add("status", "Mechanism status", position);
    out.add("device_status", "Device status", device);
}

void move(Session& session, Output& out) {
    Session::check(Move_Card(session.device(), options.direction == "in" ? 0 : 1), "moving the card");
    out.add("moved", "Card moved", options.direction);
}

void give_back(Session& session, Output& out) {
    Session::check(return_card(session.device()), "returning the card");
    out.add("returned", "Card returned", true);
}

void test(Session& session, Output& out) {
    const int icdev = session.device();
    const auto first = static_cast<unsigned char>(options.first);
    if (options.test == "gate") {
        Session::check(magnetic_gate_test(icdev, first), "testing the magnetic gate");
    } else if (options.test == "motor") {
        Session::check(motor_test(icdev, first, static_cast<unsigned char>(options.second)), "testing the motor");
    } else {
        unsigned int result = 0;
        Session::check(AGING_test(icdev, first, &result), "running the aging test");
        out.add("aging_status", "Aging status", result);
    }
    out.add("test", "Test passed", options.test);
}

}  // namespace

void add_mechanism_commands(CLI::App& app, Action& action) {
    auto* mech = app.add_subcommand("mech", "Drive the card transport mechanism");
    mech->require_subcommand(1);
    mech->add_subcommand("status", "Where the card is, and the device status")->callback([&action] { action = status; });
    auto* move_command = mech->add_subcommand("move", "Move the card in or out to the gate");
    move_command->add_option("direction", options.direction, "in or out")->check(CLI::IsMember({"in", "out"}));
    move_command->callback([&action] { action = move; });
    mech->add_subcommand("return", "Return the card to the gate")->callback([&action] { action = give_back; });
    auto* test_command = mech->add_subcommand("test", "Exercise the magnetic gate, the motor, or an aging run");
    test_command->add_option("kind", options.test, "gate, motor or aging")->check(CLI::IsMember({"gate", "motor", "aging"}));
    test_command->add_option("value", options.first, "The test's value (0-255)")->check(CLI::Range(0, 255));
    test_command->add_option("second", options.second, "The motor test's second value (0-255)")->check(CLI::Range(0, 255));
    test_command->callback([&action] { action = test; });
}

}  // namespace qzctl
