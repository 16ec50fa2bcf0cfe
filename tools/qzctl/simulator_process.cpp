#include "simulator_process.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

#include "session.h"

namespace qzctl {
namespace fs = std::filesystem;
namespace {

// qzsim beside this program, else the one of the build tree, else on the PATH.
std::string find_qzsim() {
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    if (!error && fs::exists(self.parent_path() / "qzsim", error)) return (self.parent_path() / "qzsim").string();
#ifdef QZCTL_BUILD_QZSIM
    if (fs::exists(QZCTL_BUILD_QZSIM, error)) return QZCTL_BUILD_QZSIM;
#endif
    return "qzsim";
}

bool wait_for(const fs::path& path, int child) {
    for (int i = 0; i < 500; ++i) {
        std::error_code error;
        if (fs::exists(path, error)) return true;
        if (waitpid(child, nullptr, WNOHANG) == child) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}  // namespace

SimulatorProcess::SimulatorProcess(const std::string& scenario, bool serial_only) {
    std::string pattern = (fs::temp_directory_path() / "qzsim-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw Failure(exit_simulator, "cannot create a folder for the simulator");
    folder_ = pattern;
    fs::create_directory(fs::path(folder_) / "ports");
    fs::create_directory(fs::path(folder_) / "hid");
    serial_only_ = serial_only;
    hid_ = !serial_only && access("/dev/fuse", R_OK | W_OK) == 0;

    // Where /dev/fuse exists but mounting fails, the serial line alone still serves.
    bool ready = launch(scenario);
    if (!ready && hid_) {
        hid_ = false;
        ready = launch(scenario);
    }
    if (!ready) {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
        throw Failure(exit_simulator, "the simulator (" + find_qzsim() + ") did not start");
    }
    setenv("QZ_32_PORTS_DIR", (folder_ + "/ports").c_str(), 1);
    setenv("QZ_32_HIDRAW_DIR", (folder_ + "/hid").c_str(), 1);
}

bool SimulatorProcess::launch(const std::string& scenario) {
    std::vector<std::string> arguments{find_qzsim(), "--serial", folder_ + "/ports", "--screen", screen_file()};
    if (hid_) arguments.insert(arguments.end(), {"--hid", folder_ + "/hid"});
    if (!scenario.empty()) arguments.insert(arguments.end(), {"--scenario", scenario});

    pid_ = fork();
    if (pid_ < 0) return false;
    if (pid_ == 0) {
        std::vector<char*> argv;
        for (auto& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        if (std::getenv("QZCTL_SIM_VERBOSE") == nullptr && freopen("/dev/null", "w", stdout) == nullptr) _exit(127);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    const bool ready = wait_for(fs::path(folder_) / "ports" / "COM1", pid_) &&
                       (!hid_ || wait_for(fs::path(folder_) / "hid" / "hidraw0", pid_));
    if (!ready) {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }
    return ready;
}

SimulatorProcess::~SimulatorProcess() {
    if (pid_ > 0) {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

std::string SimulatorProcess::description() const {
    std::string text = "simulator: serial line " + folder_ + "/ports/COM1";
    if (hid_)
        text += ", HID node " + folder_ + "/hid/hidraw0";
    else if (!serial_only_)
        text += " (no HID node: FUSE is not usable here)";
    return text + "\n";
}

}  // namespace qzctl
