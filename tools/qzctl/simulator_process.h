// qzsim started as a child process: a HID node through FUSE and a serial line on
// a pseudo-terminal, in a temporary folder that the library is pointed at.
#pragma once

#include <string>

namespace qzctl {

class SimulatorProcess {
public:
    SimulatorProcess(const std::string& scenario, bool serial_only);
    ~SimulatorProcess();
    SimulatorProcess(const SimulatorProcess&) = delete;
    SimulatorProcess& operator=(const SimulatorProcess&) = delete;

    // Where the simulator serves, for people.
    std::string description() const;
    // The PNG file the simulator keeps of its colour screen.
    std::string screen_file() const { return folder_ + "/screen.png"; }

private:
    // Starts qzsim and waits until it serves; false (and no child left) if it does not.
    bool launch(const std::string& scenario);

    std::string folder_;
    bool hid_ = false;
    bool serial_only_ = false;
    int pid_ = -1;
};

}  // namespace qzctl
