// Serial ports on Linux: termios in raw mode, reads by poll.
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>

#include "platform/linux/linux_platform.h"
#include "platform/paths.h"

namespace qz::platform {
namespace {

constexpr int write_timeout_ms = 500;

std::optional<int> port_number(std::string name) {
    if (name.starts_with("\\\\.\\")) name.erase(0, 4);
    if (!name.starts_with("COM") || name.size() == 3) return std::nullopt;
    int number = 0;
    const auto [end, error] = std::from_chars(name.data() + 3, name.data() + name.size(), number);
    if (error != std::errc{} || end != name.data() + name.size() || number < 1) return std::nullopt;
    return number;
}

speed_t termios_speed(std::uint32_t baud) {
    switch (baud) {
        case 19200: return B19200;
        case 38400: return B38400;
        case 57600: return B57600;
        case 115200: return B115200;
        default: return B9600;
    }
}

tcflag_t character_size(std::uint8_t byte_size) {
    switch (byte_size) {
        case 5: return CS5;
        case 6: return CS6;
        case 7: return CS7;
        default: return CS8;
    }
}

// Raw mode with the given framing; no flow control of either kind.
void configure(termios& settings, const SerialSettings& wanted) {
    cfmakeraw(&settings);
    cfsetispeed(&settings, termios_speed(wanted.baud));
    cfsetospeed(&settings, termios_speed(wanted.baud));
    settings.c_cflag &= ~(CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS);
    settings.c_cflag |= character_size(wanted.byte_size) | CLOCAL | CREAD;
    if (wanted.parity != 0) settings.c_cflag |= PARENB | (wanted.parity == 1 ? PARODD : 0);
    if (wanted.stop_bits != 0) settings.c_cflag |= CSTOPB;
    settings.c_iflag &= ~(IXON | IXOFF | IXANY);
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = 0;
}

}  // namespace

std::string serial_device_path(const std::string& name) {
    const auto number = port_number(name);
    if (!number) return {};
    const auto link = ports_dir() / ("COM" + std::to_string(*number));
    std::error_code error;
    if (std::filesystem::exists(link, error)) return link.string();
    return "/dev/ttyS" + std::to_string(*number - 1);
}

int LinuxPlatform::serial_open(const std::string& name, const SerialSettings& wanted) {
    const std::string path = serial_device_path(name);
    if (path.empty()) return static_cast<int>(SerialOpenError::unavailable);
    const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return static_cast<int>(errno == EBUSY || errno == EACCES ? SerialOpenError::in_use
                                                                  : SerialOpenError::unavailable);
    auto fail = [fd](SerialOpenError error) {
        ::close(fd);
        return static_cast<int>(error);
    };
    // TIOCEXCL keeps out other openers but not root; the lock covers that.
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) return fail(SerialOpenError::in_use);
    termios settings{};
    if (::tcgetattr(fd, &settings) != 0) return fail(SerialOpenError::state_unreadable);
    configure(settings, wanted);
    if (::tcsetattr(fd, TCSANOW, &settings) != 0) return fail(SerialOpenError::state_refused);
    ::ioctl(fd, TIOCEXCL);  // only once the port is ours: close() takes the mark off again
    int lines = TIOCM_DTR | TIOCM_RTS;
    ::ioctl(fd, TIOCMBIS, &lines);  // ptys have no modem lines; that is no failure
    handles_.add(fd, {.kind = HandleKind::serial, .read_timeout_ms = wanted.read_timeout_ms});
    return fd;
}

LinuxPlatform::SerialInput& LinuxPlatform::serial_input(int handle) {
    std::lock_guard guard(input_mutex_);
    auto& input = inputs_[handle];
    if (!input) input = std::make_unique<SerialInput>();
    return *input;
}

void LinuxPlatform::serial_purge(int handle) {
    if (!handles_.is(handle, HandleKind::serial)) return;
    ::tcflush(handle, TCIOFLUSH);
    SerialInput& input = serial_input(handle);
    input.next = input.end = 0;
}

bool LinuxPlatform::serial_write(int handle, std::uint8_t byte) {
    if (!handles_.is(handle, HandleKind::serial)) return false;
    for (;;) {
        const ssize_t written = ::write(handle, &byte, 1);
        if (written == 1) return true;
        if (written == 0) return true;
        if (written < 0 && errno == EINTR) continue;
        if (written < 0 && errno != EAGAIN) return false;
        // The output queue is full: wait as long as the port's write time-out;
        // a byte that still does not go is dropped, as a timed-out write is.
        pollfd ready{.fd = handle, .events = POLLOUT, .revents = 0};
        if (::poll(&ready, 1, write_timeout_ms) <= 0) return true;
    }
}

ByteRead LinuxPlatform::serial_read(int handle, std::uint8_t& byte) {
    const auto info = handles_.find(handle);
    if (!info || info->kind != HandleKind::serial) return ByteRead::failed;
    SerialInput& input = serial_input(handle);
    if (input.next < input.end) {
        byte = input.bytes[input.next++];
        return ByteRead::received;
    }
    pollfd ready{.fd = handle, .events = POLLIN, .revents = 0};
    const int polled = ::poll(&ready, 1, static_cast<int>(std::min<std::uint32_t>(info->read_timeout_ms, 1u << 30)));
    if (polled < 0) return errno == EINTR ? ByteRead::timed_out : ByteRead::failed;
    if (polled == 0) return ByteRead::timed_out;
    if ((ready.revents & POLLIN) == 0) return ByteRead::failed;  // hung up or in error
    const ssize_t got = ::read(handle, input.bytes, sizeof input.bytes);
    if (got > 0) {
        input.next = 1;
        input.end = static_cast<std::size_t>(got);
        byte = input.bytes[0];
        return ByteRead::received;
    }
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) return ByteRead::timed_out;
    return ByteRead::failed;
}

}  // namespace qz::platform
