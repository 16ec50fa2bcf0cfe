#include "e2e/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <thread>

namespace qz::test {
namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
    sim::UniqueFd read;
    sim::UniqueFd write;
    Pipe() {
        int fds[2];
        if (::pipe2(fds, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
        read = sim::UniqueFd(fds[0]);
        write = sim::UniqueFd(fds[1]);
    }
};

// This process's environment with `changes` applied, as "NAME=value" texts.
std::vector<std::string> environment_with(const std::map<std::string, std::string>& changes) {
    std::vector<std::string> entries;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!changes.contains(text.substr(0, text.find('=')))) entries.push_back(text);
    }
    for (const auto& [name, value] : changes) entries.push_back(name + "=" + value);
    return entries;
}

std::vector<char*> pointers_to(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// Starts the program with its stdout and stderr on the given descriptors. The
// child is sent SIGTERM should this process die before it. Everything the
// child needs is prepared before the fork.
pid_t spawn(std::vector<std::string> arguments, const std::map<std::string, std::string>& changes, int out, int err) {
    std::vector<std::string> environment = environment_with(changes);
    const auto argv = pointers_to(arguments);
    const auto envp = pointers_to(environment);
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid < 0) throw std::runtime_error("fork failed");
    if (pid > 0) return pid;

    if (::prctl(PR_SET_PDEATHSIG, SIGTERM) != 0 || ::getppid() != parent) ::_exit(127);
    if (::dup2(out, STDOUT_FILENO) < 0 || ::dup2(err, STDERR_FILENO) < 0) ::_exit(127);
    ::execve(argv[0], argv.data(), envp.data());
    ::_exit(127);
}

int exit_code_of(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }

// Waits for the child until `deadline`, then kills it.
int reap(pid_t pid, Clock::time_point deadline) {
    int status = 0;
    while (::waitpid(pid, &status, WNOHANG) == 0) {
        if (Clock::now() >= deadline) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &status, 0);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return exit_code_of(status);
}

int remaining_ms(Clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

}  // namespace

ProgramRun run_program(const std::vector<std::string>& arguments, const std::map<std::string, std::string>& environment,
                       std::chrono::milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    Pipe out;
    Pipe err;
    const pid_t pid = spawn(arguments, environment, out.write.get(), err.write.get());
    out.write.reset();
    err.write.reset();

    ProgramRun run;
    std::array<pollfd, 2> streams{{{out.read.get(), POLLIN, 0}, {err.read.get(), POLLIN, 0}}};
    std::array<std::string*, 2> texts{&run.out, &run.err};
    int open_streams = 2;
    while (open_streams > 0 && ::poll(streams.data(), streams.size(), remaining_ms(deadline)) > 0) {
        for (std::size_t i = 0; i < streams.size(); ++i) {
            if (streams[i].revents == 0) continue;
            char buffer[4096];
            const ssize_t got = ::read(streams[i].fd, buffer, sizeof buffer);
            if (got > 0) {
                texts[i]->append(buffer, static_cast<std::size_t>(got));
            } else if (got == 0 || errno != EINTR) {
                streams[i].fd = -1;  // poll skips it from now on
                --open_streams;
            }
        }
    }
    run.exit_code = reap(pid, deadline);
    return run;
}

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const std::filesystem::path& stderr_file) {
    const sim::UniqueFd err(::open(stderr_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (!err) throw std::runtime_error("cannot create " + stderr_file.string());
    Pipe out;
    pid_ = spawn(arguments, {}, out.write.get(), err.get());
    stdout_ = std::move(out.read);
}

ChildProcess::~ChildProcess() { stop(); }

std::optional<std::string> ChildProcess::read_line(std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    for (;;) {
        if (const auto end = buffered_.find('\n'); end != std::string::npos) {
            std::string line = buffered_.substr(0, end);
            buffered_.erase(0, end + 1);
            return line;
        }
        pollfd ready{stdout_.get(), POLLIN, 0};
        if (::poll(&ready, 1, remaining_ms(deadline)) <= 0) return std::nullopt;
        char buffer[1024];
        const ssize_t got = ::read(stdout_.get(), buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return std::nullopt;
        buffered_.append(buffer, static_cast<std::size_t>(got));
    }
}

int ChildProcess::stop(std::chrono::milliseconds grace) {
    if (!exit_code_ && pid_ > 0) {
        ::kill(pid_, SIGTERM);
        exit_code_ = reap(pid_, Clock::now() + grace);
    }
    return exit_code_.value_or(-1);
}

}  // namespace qz::test
