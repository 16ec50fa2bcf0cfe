// What every command shares: how to reach the terminal, the open handle, errors.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

namespace qzctl {

enum ExitCode : int {
    exit_ok = 0,
    exit_command_failed = 1,  // the terminal or the link gave a non-zero status
    exit_usage = 2,           // bad command line or argument
    exit_no_terminal = 3,     // no terminal found, or it did not answer
    exit_simulator = 4,       // the simulator could not be started
};

// A failure that ends the program with `code` after printing `what()`.
struct Failure : std::runtime_error {
    Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code(code) {}
    ExitCode code;
};

class SimulatorProcess;

struct Connection {
    int port = 0;
    int baud = 115200;
    bool simulate = false;
    bool simulate_serial_only = false;
    std::string scenario;
    std::string snapshot;  // with simulate: where to save the simulated screen at the end
    int verbosity = 0;
};

class Session {
public:
    explicit Session(Connection connection);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // The open terminal; opened (and the simulator started) on first use.
    int device();
    // Throws Failure(exit_command_failed) naming `what` and the status unless it is 0.
    static void check(int result, const std::string& what);
    const Connection& connection() const { return connection_; }
    // Copies what the simulated screen shows to connection().snapshot.
    void save_snapshot() const;

private:
    Connection connection_;
    std::unique_ptr<SimulatorProcess> simulator_;
    int handle_ = 0;
};

}  // namespace qzctl
