// Programs the end-to-end tests start: a server that runs until it is stopped,
// or a command that runs to its end. A child never outlives the test process.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sim/core/unique_fd.h"

namespace qz::test {

struct ProgramRun {
    int exit_code = -1;  // -1: killed by a signal or stopped at the deadline
    std::string out;
    std::string err;
};

// Runs `arguments` (the program first) with `environment` added to this
// process's, stdout and stderr captured, killing it at `deadline`.
ProgramRun run_program(const std::vector<std::string>& arguments,
                       const std::map<std::string, std::string>& environment = {},
                       std::chrono::milliseconds deadline = std::chrono::seconds(20));

// A child started in the background. Its stdout comes through a pipe, its
// stderr goes to `stderr_file`. It receives SIGTERM when this process dies.
class ChildProcess {
public:
    ChildProcess(const std::vector<std::string>& arguments, const std::filesystem::path& stderr_file);
    // Stops the child if it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The next line of the child's stdout, or nothing when the stream ends or
    // `timeout` passes first.
    std::optional<std::string> read_line(std::chrono::milliseconds timeout);

    // SIGTERM, then SIGKILL if it has not ended after `grace`. The exit code,
    // or -1 when a signal ended it.
    int stop(std::chrono::milliseconds grace = std::chrono::seconds(5));

private:
    pid_t pid_ = -1;
    sim::UniqueFd stdout_;
    std::string buffered_;
    std::optional<int> exit_code_;
};

}  // namespace qz::test
