// COM ports on Windows: opened exclusively in plain mode, set up through the
// device control block, read one byte at a time with the port's time-outs.
#include "platform/windows/windows_platform.h"

namespace qz::platform {
namespace {

constexpr DWORD queue_bytes = 1024;
constexpr DWORD purge_everything = PURGE_TXABORT | PURGE_RXABORT | PURGE_TXCLEAR | PURGE_RXCLEAR;

COMMTIMEOUTS port_timeouts(std::uint32_t read_timeout_ms) {
    COMMTIMEOUTS timeouts{};
    timeouts.ReadIntervalTimeout = 500;
    timeouts.ReadTotalTimeoutMultiplier = 0;
    timeouts.ReadTotalTimeoutConstant = read_timeout_ms;
    timeouts.WriteTotalTimeoutMultiplier = 0;
    timeouts.WriteTotalTimeoutConstant = 500;
    return timeouts;
}

// Speed and framing as asked; binary mode, no flow control of either kind,
// DTR and RTS on; every other flag as the port had it.
void configure(DCB& control, const SerialSettings& wanted) {
    control.BaudRate = wanted.baud;
    control.ByteSize = wanted.byte_size;
    control.Parity = wanted.parity;
    control.StopBits = wanted.stop_bits;
    control.fBinary = TRUE;
    control.fOutxCtsFlow = FALSE;
    control.fOutxDsrFlow = FALSE;
    control.fDsrSensitivity = FALSE;
    control.fOutX = FALSE;
    control.fInX = FALSE;
    control.fDtrControl = DTR_CONTROL_ENABLE;
    control.fRtsControl = RTS_CONTROL_ENABLE;
}

}  // namespace

int WindowsPlatform::serial_open(const std::string& name, const SerialSettings& wanted) {
    const HANDLE port = CreateFileA(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (port == INVALID_HANDLE_VALUE)
        return static_cast<int>(GetLastError() == ERROR_ACCESS_DENIED ? SerialOpenError::in_use
                                                                       : SerialOpenError::unavailable);
    auto fail = [port](SerialOpenError error) {
        CloseHandle(port);
        return static_cast<int>(error);
    };
    SetupComm(port, queue_bytes, queue_bytes);
    COMMTIMEOUTS timeouts = port_timeouts(wanted.read_timeout_ms);
    SetCommTimeouts(port, &timeouts);
    DCB control{};
    control.DCBlength = sizeof control;
    if (!GetCommState(port, &control)) return fail(SerialOpenError::state_unreadable);
    configure(control, wanted);
    if (!SetCommState(port, &control) || !SetCommMask(port, EV_TXEMPTY)) return fail(SerialOpenError::state_refused);
    const int handle = adopt(port, {.kind = HandleKind::serial, .read_timeout_ms = wanted.read_timeout_ms});
    return handle == -1 ? static_cast<int>(SerialOpenError::unavailable) : handle;
}

void WindowsPlatform::serial_purge(int handle) {
    if (handles_.is(handle, HandleKind::serial)) PurgeComm(system_handle(handle), purge_everything);
}

// A write that times out drops the byte without failing, as the port's
// write time-out makes it.
bool WindowsPlatform::serial_write(int handle, std::uint8_t byte) {
    if (!handles_.is(handle, HandleKind::serial)) return false;
    DWORD written = 0;
    return WriteFile(system_handle(handle), &byte, 1, &written, nullptr) != FALSE;
}

ByteRead WindowsPlatform::serial_read(int handle, std::uint8_t& byte) {
    if (!handles_.is(handle, HandleKind::serial)) return ByteRead::failed;
    DWORD received = 0;
    if (!ReadFile(system_handle(handle), &byte, 1, &received, nullptr)) return ByteRead::failed;
    return received == 1 ? ByteRead::received : ByteRead::timed_out;
}

}  // namespace qz::platform
