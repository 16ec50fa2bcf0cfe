// The qzctl program against the simulator: what it prints and its exit codes
// (0 done, 1 the command failed, 2 usage, 3 no terminal, 4 simulator).
#include <unistd.h>

#include <fstream>

#include "e2e/child_process.h"
#include "e2e/e2e_fixture.h"

namespace qz::test {
namespace {

namespace fs = std::filesystem;

class Qzctl : public SimulatorTest {
protected:
    // Runs qzctl with `arguments`; the library in it finds the terminal through
    // `environment` (qzctl --sim points it at its own simulator).
    ProgramRun qzctl(std::vector<std::string> arguments, std::map<std::string, std::string> environment = {}) {
        arguments.insert(arguments.begin(), QZ_32_QZCTL);
        environment.emplace("QZ_32_LOG_ROOT", (folder.path() / "no-log").string());
        return run_program(arguments, environment);
    }
    // The environment that leads the library to our own simulator.
    std::map<std::string, std::string> to_sim() const {
        return {{"QZ_32_HIDRAW_DIR", sim->hid_dir().string()}, {"QZ_32_PORTS_DIR", sim->ports_dir().string()}};
    }

    TempDir folder;
};

TEST_F(Qzctl, InfoAsJsonFromItsOwnSimulator) {
    // --sim offers the HID node wherever /dev/fuse is usable, and then needs the mount to work.
    if (::access("/dev/fuse", R_OK | W_OK) == 0 && !start(Link::hid)) return;
    sim.reset();
    const auto run = qzctl({"--sim", "--json", "info"});
    ASSERT_EQ(run.exit_code, 0) << run.err;
    const auto info = nlohmann::json::parse(run.out);
    EXPECT_EQ(info["version"], "QZ-SIM V1.00");
    EXPECT_EQ(info["serial_number"], "515A323032343030303030310000000000000000");  // "QZ2024000001"
    EXPECT_EQ(info["registration_number"], "REG-0000-0001");
}

TEST_F(Qzctl, EepromWrittenIsReadBackFromTheSameSimulator) {
    if (!start(Link::serial)) return;
    const auto written = qzctl({"eeprom", "write", "10", "-d", "48656c6c6f"}, to_sim());
    ASSERT_EQ(written.exit_code, 0) << written.err;
    const auto read = qzctl({"--json", "eeprom", "read", "8", "9"}, to_sim());
    ASSERT_EQ(read.exit_code, 0) << read.err;
    const auto result = nlohmann::json::parse(read.out);
    EXPECT_EQ(result["offset"], 8);
    EXPECT_EQ(result["data"], "FFFF48656C6C6FFFFF");
}

TEST_F(Qzctl, ExitCodesOfFailuresBeforeAnyCommand) {
    const fs::path ports = folder.path() / "ports";
    fs::create_directory(ports);
    fs::create_directory_symlink(folder.path(), ports / "COM6");  // opens as no port
    const std::map<std::string, std::string> nowhere{{"QZ_32_HIDRAW_DIR", (folder.path() / "no-hid").string()},
                                                     {"QZ_32_PORTS_DIR", ports.string()}};
    const fs::path broken = folder.path() / "broken.json";
    std::ofstream(broken) << "{ \"faults\": 7 }";

    struct Case {
        const char* what;
        std::vector<std::string> arguments;
        int exit_code;
        const char* said;
    };
    const Case cases[] = {
        {"offset out of range", {"eeprom", "read", "300"}, 2, "offset"},
        {"odd hex digits", {"eeprom", "write", "0", "-d", "ABC"}, 2, "hexadecimal"},
        {"no command", {}, 2, "subcommand"},
        {"no terminal", {"-p", "5", "info"}, 3, "serial port 5 failed: serial port cannot be opened (-21)"},
        {"scenario qzsim refuses", {"--sim", "--scenario", broken.string(), "info"}, 4, "simulator"},
    };
    for (const Case& c : cases) {
        const auto run = qzctl(c.arguments, nowhere);
        EXPECT_EQ(run.exit_code, c.exit_code) << c.what << "\n" << run.err;
        EXPECT_NE(run.err.find(c.said), std::string::npos) << c.what << ": " << run.err;
    }
}

}  // namespace
}  // namespace qz::test
