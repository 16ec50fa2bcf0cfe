#include "session.h"

#include <filesystem>
#include <iostream>

#include "qz_32.h"
#include "simulator_process.h"
#include "status_text.h"

namespace qzctl {

Session::Session(Connection connection) : connection_(std::move(connection)) {}

Session::~Session() {
    if (handle_ > 1) close_device(handle_);
}

int Session::device() {
    if (handle_ > 1) return handle_;
    if (connection_.simulate && !simulator_) {
        simulator_ = std::make_unique<SimulatorProcess>(connection_.scenario, connection_.simulate_serial_only);
        if (connection_.verbosity > 0) std::cerr << simulator_->description();
    }
    const int handle = open_device(static_cast<unsigned char>(connection_.port), connection_.baud);
    if (handle > 1) return handle_ = handle;
    if (handle == 0) throw Failure(exit_no_terminal, "a link opened but no terminal answered the version request");
    throw Failure(exit_no_terminal, "no terminal on USB and serial port " + std::to_string(connection_.port) +
                                        " failed: " + status_text(handle));
}

void Session::save_snapshot() const {
    if (!simulator_) throw Failure(exit_usage, "--snapshot needs --sim and a command that talks to the terminal");
    std::error_code error;
    std::filesystem::copy_file(simulator_->screen_file(), connection_.snapshot,
                               std::filesystem::copy_options::overwrite_existing, error);
    if (error) throw Failure(exit_command_failed, "saving the snapshot " + connection_.snapshot + ": " + error.message());
}

void Session::check(int result, const std::string& what) {
    if (result != 0) throw Failure(exit_command_failed, what + " failed: " + status_text(result));
}

}  // namespace qzctl
