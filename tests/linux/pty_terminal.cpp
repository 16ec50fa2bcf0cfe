#include "linux/pty_terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <stdexcept>

namespace qz::test {

PtyTerminal::PtyTerminal(std::function<Bytes(const Bytes&)> respond, const std::string& port_name)
    : respond_(std::move(respond)) {
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) throw std::runtime_error("no pty");
    slave_path_ = ptsname(master_);
    keep_slave_open_ = ::open(slave_path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios raw{};
    tcgetattr(master_, &raw);
    cfmakeraw(&raw);
    tcsetattr(master_, TCSANOW, &raw);
    std::filesystem::create_symlink(slave_path_, ports_.path() / port_name);
    server_ = std::thread([this] { serve(); });
}

PtyTerminal::~PtyTerminal() {
    stop_ = true;
    server_.join();
    ::close(keep_slave_open_);
    ::close(master_);
}

void PtyTerminal::serve() {
    Bytes pending;
    while (!stop_) {
        pollfd ready{.fd = master_, .events = POLLIN, .revents = 0};
        if (::poll(&ready, 1, 20) <= 0 || (ready.revents & POLLIN) == 0) continue;
        std::uint8_t buffer[4096];
        const ssize_t got = ::read(master_, buffer, sizeof buffer);
        if (got <= 0) continue;
        pending.insert(pending.end(), buffer, buffer + got);
        while (!pending.empty()) {
            // Drop anything before a frame start, then wait for the whole frame.
            if (pending[0] != 0x02) {
                pending.erase(pending.begin());
                continue;
            }
            if (pending.size() < 3) break;
            const std::size_t total = ((std::size_t{pending[1]} << 8) | pending[2]) + 5;
            if (pending.size() < total) break;
            const Bytes request(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(total));
            pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(total));
            ++requests_;
            const Bytes reply = respond_(request);
            if (!reply.empty() && ::write(master_, reply.data(), reply.size()) < 0) return;
        }
    }
}

}  // namespace qz::test
