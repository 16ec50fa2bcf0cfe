#include "sim/endpoints/pty_server.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/eventfd.h>
#include <termios.h>

#include <array>
#include <cerrno>
#include <iostream>
#include <system_error>

namespace qz::sim {
namespace {

// A request that stops halfway for this long is dropped, as a terminal's
// time-out between bytes would.
constexpr int inter_byte_timeout_ms = 1000;
// How often a reply held for a person is looked at.
constexpr int held_reply_check_ms = 20;

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

}  // namespace

PtyServer::PtyServer(SerialEndpoint& endpoint, std::mutex& lock, std::filesystem::path link)
    : endpoint_(endpoint), lock_(lock), link_(std::move(link)) {
    master_ = UniqueFd(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!master_) fail("posix_openpt");
    if (grantpt(master_.get()) != 0 || unlockpt(master_.get()) != 0) fail("unlockpt");
    std::array<char, 128> name{};
    if (ptsname_r(master_.get(), name.data(), name.size()) != 0) fail("ptsname");
    slave_path_ = name.data();
    slave_ = UniqueFd(::open(slave_path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!slave_) fail("open pty slave");
    termios raw{};
    if (tcgetattr(slave_.get(), &raw) != 0) fail("tcgetattr");
    cfmakeraw(&raw);
    if (tcsetattr(slave_.get(), TCSANOW, &raw) != 0) fail("tcsetattr");
    stop_ = UniqueFd(eventfd(0, EFD_CLOEXEC));
    if (!stop_) fail("eventfd");

    if (std::filesystem::is_symlink(link_)) std::filesystem::remove(link_);
    std::filesystem::create_directories(link_.parent_path());
    std::filesystem::create_symlink(slave_path_, link_);
    thread_ = std::thread([this] {
        try {
            serve();
        } catch (const std::exception& error) {
            std::cerr << "qzsim: serial service stopped: " << error.what() << '\n';
        }
    });
}

PtyServer::~PtyServer() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(stop_.get(), &one, sizeof one);
    thread_.join();
    std::error_code ignored;
    std::filesystem::remove(link_, ignored);
}

void PtyServer::serve() {
    for (;;) {
        std::array<pollfd, 2> fds{{{master_.get(), static_cast<short>(POLLIN | (unsent_.empty() ? 0 : POLLOUT)), 0},
                                   {stop_.get(), POLLIN, 0}}};
        const auto [midway, holding] = [&] {
            std::lock_guard guard(lock_);
            return std::pair{endpoint_.receiving(), endpoint_.holding()};
        }();
        const int wait_ms = midway ? inter_byte_timeout_ms : holding ? held_reply_check_ms : -1;
        const int ready = ::poll(fds.data(), fds.size(), wait_ms);
        if (ready < 0 && errno != EINTR) return;
        if (fds[1].revents != 0) return;
        if (ready == 0) {
            std::lock_guard guard(lock_);
            if (midway) endpoint_.purge();
            while (const auto byte = endpoint_.transmit()) unsent_.push_back(*byte);
            continue;
        }
        if ((fds[0].revents & (POLLERR | POLLNVAL)) || !exchange(fds[0].revents)) return;
    }
}

bool PtyServer::exchange(short events) {
    if (events & POLLIN) {
        std::array<std::uint8_t, 4096> buffer{};
        const ssize_t count = ::read(master_.get(), buffer.data(), buffer.size());
        if (count < 0 && errno != EAGAIN && errno != EINTR && errno != EIO) return false;
        if (count > 0) {
            // A new request: the host has given up on what is left of the last reply.
            unsent_.clear();
            std::lock_guard guard(lock_);
            endpoint_.receive(std::span(buffer).first(static_cast<std::size_t>(count)));
            while (const auto byte = endpoint_.transmit()) unsent_.push_back(*byte);
        }
    }
    if ((events & POLLOUT) && !unsent_.empty()) {
        const ssize_t count = ::write(master_.get(), unsent_.data(), unsent_.size());
        if (count < 0 && errno != EAGAIN && errno != EINTR) return false;
        if (count > 0) unsent_.erase(unsent_.begin(), unsent_.begin() + count);
    }
    return true;
}

}  // namespace qz::sim
