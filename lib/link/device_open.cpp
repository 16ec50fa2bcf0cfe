#include "link/device_open.h"

#include <array>

#include "api/qz_32.h"
#include "link/command.h"
#include "link/export_lock.h"
#include "link/link_state.h"
#include "link/terminal_commands.h"
#include "link/log.h"
#include "link/status.h"
#include "platform/platform.h"

namespace qz::link {

std::string serial_port_name(int port) {
    const std::string number = std::to_string(port + 1);
    return port < 9 ? "COM" + number : "\\\\.\\COM" + number;
}

std::uint32_t serial_speed(int baud) {
    switch (baud) {
        case 19200:
        case 38400:
        case 57600:
        case 115200: return static_cast<std::uint32_t>(baud);
        default: return 9600;
    }
}

int hid_open_terminal(std::uint32_t read_ms, std::uint32_t write_gap_ms, std::uint16_t vendor,
                      std::uint16_t product) {
    auto& os = platform::current();
    for (int index = 0; index < hid_interfaces_searched; ++index) {
        const auto path = os.hid_path(index);
        if (!path) return 0;
        // A path that does not fit the device path buffer is not followed.
        if (path->size() >= device_path_capacity) continue;
        const int handle = os.hid_open(*path);
        if (handle == -1) continue;
        const auto identity = os.hid_identity(handle);
        if (!identity || identity->vendor != vendor || identity->product != product) {
            os.close(handle);
            continue;
        }
        const auto report_length = os.hid_feature_report_length(handle);
        if (!report_length) {
            os.close(handle);
            continue;
        }
        if (*report_length != 0) {
            link_state().hid_report_length = *report_length;
            write_log(log_format("ReportBufferSize = 0x%02x", *report_length));
            set_link_timeouts(read_ms, write_gap_ms);
        }
        return handle;
    }
    return 0;
}

int hid_open_link(std::uint32_t read_ms, std::uint32_t write_gap_ms, std::uint16_t vendor, std::uint16_t product) {
    const int handle = hid_open_terminal(read_ms, write_gap_ms, vendor, product);
    link_state().kind = handle > 1 ? LinkKind::hid : LinkKind::none;
    return handle;
}

int serial_open_port(int port, int baud, std::uint8_t byte_size, std::uint8_t stop_bits, std::uint8_t parity) {
    if (port > highest_port) return status_bad_argument;
    const platform::SerialSettings settings{
        .baud = serial_speed(baud),
        .byte_size = byte_size,
        .stop_bits = stop_bits,
        .parity = parity,
        .read_timeout_ms = link_state().read_ms,
    };
    return platform::current().serial_open(serial_port_name(port), settings);
}

int serial_open_link(int port, int baud) {
    const int handle = serial_open_port(port, baud, 8, 0, 0);
    link_state().kind = handle > 1 ? LinkKind::serial : LinkKind::none;
    return handle;
}

}  // namespace qz::link

using namespace qz::link;

QZ_32_API int QZ_32_CALL open_device(unsigned char port, int baud) {
    const qz::link::ExportLock lock;
    write_log(log_format("open_device port = %d,Baud= %d", port, baud));
    const TimeoutsForCommand timeouts(100, 0, 5000, 0);
    int handle = hid_open_link(5000, 10, terminal_vendor, terminal_product);
    if (handle < 1) {
        handle = serial_open_link(port, baud);
        // Between "com" and "HANDLE" stands an ideographic space (GBK A1 A1).
        write_log(log_format("open_device com\xA1\xA1HANDLE = %d", handle));
    }
    write_log(log_format("open_device HANDLE = %d", handle));
    if (handle > 1) {
        unsigned char length = 0;
        std::array<unsigned char, 256> version{};
        if (get_version(handle, &length, version.data()) != 0) {
            close_device(handle);
            handle = 0;
        }
    }
    write_log(log_format("open_device return = %d", handle));
    return handle;
}

QZ_32_API int QZ_32_CALL close_device(int icdev) {
    const qz::link::ExportLock lock;
    write_log(log_format("close_device HANDLE = %d", icdev));
    if (icdev == -1) return -1;
    if (qz::platform::current().close(icdev)) {
        write_log("close_device \xB3\xC9\xB9\xA6 ");  // "close_device 成功 " in GBK
        return 0;
    }
    write_log("close_device \xCA\xA7\xB0\xDC ");  // "close_device 失败 " in GBK
    return -1;
}

QZ_32_API int QZ_32_CALL get_version(int icdev, unsigned char* length, unsigned char* version) {
    const qz::link::ExportLock lock;
    if (length == nullptr || version == nullptr) return status_bad_argument;
    *length = 0;
    Reply<255> reply;
    int result;
    {
        TimeoutsForCommand timeouts(100, 0);
        result = transact(icdev, Payload{terminal_class, terminal::version, 0x00}, reply);
    }
    write_log(log_format("get_version HANDLE = %d,return = %d", icdev, result));
    if (result == 0) {
        *length = static_cast<unsigned char>(reply.length);
        std::copy(reply.data().begin(), reply.data().end(), version);
    }
    return result;
}
