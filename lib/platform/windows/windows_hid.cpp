// HID on Windows: the interfaces of the HID class in the order SetupDi lists
// them, opened exclusively; attributes, capabilities and feature reports from hid.dll.
#include <windows.h>
#include <setupapi.h>
// MinGW's HID header declares its functions without C linkage.
extern "C" {
#include <hidsdi.h>
}

#include <memory>
#include <vector>

#include "platform/windows/windows_platform.h"

namespace qz::platform {
namespace {

constexpr int interfaces_listed = 64;

// The device information list of present HID interfaces, destroyed with the object.
class HidInterfaceList {
public:
    HidInterfaceList() {
        HidD_GetHidGuid(&class_guid_);
        list_ = SetupDiGetClassDevsA(&class_guid_, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    }
    ~HidInterfaceList() {
        if (valid()) SetupDiDestroyDeviceInfoList(list_);
    }
    HidInterfaceList(const HidInterfaceList&) = delete;
    HidInterfaceList& operator=(const HidInterfaceList&) = delete;

    bool valid() const { return list_ != INVALID_HANDLE_VALUE; }

    std::optional<std::string> path(int index) const {
        SP_DEVICE_INTERFACE_DATA interface_data{};
        interface_data.cbSize = sizeof interface_data;
        if (!SetupDiEnumDeviceInterfaces(list_, nullptr, &class_guid_, static_cast<DWORD>(index), &interface_data))
            return std::nullopt;
        DWORD size = 0;
        SetupDiGetDeviceInterfaceDetailA(list_, &interface_data, nullptr, 0, &size, nullptr);
        if (size < sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A)) return std::nullopt;
        // The detail block is a record of variable length; keep it aligned as the record.
        std::vector<std::uint64_t> block((size + sizeof(std::uint64_t) - 1) / sizeof(std::uint64_t));
        auto* detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(block.data());
        detail->cbSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A);
        if (!SetupDiGetDeviceInterfaceDetailA(list_, &interface_data, detail, size, nullptr, nullptr))
            return std::nullopt;
        const std::size_t path_capacity = size - offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_A, DevicePath);
        return std::string(detail->DevicePath, strnlen(detail->DevicePath, path_capacity));
    }

private:
    GUID class_guid_{};
    HDEVINFO list_ = INVALID_HANDLE_VALUE;
};

// Preparsed data of a HID device, freed with the object.
class PreparsedData {
public:
    explicit PreparsedData(HANDLE device) {
        if (!HidD_GetPreparsedData(device, &data_)) data_ = nullptr;
    }
    ~PreparsedData() {
        if (data_ != nullptr) HidD_FreePreparsedData(data_);
    }
    PreparsedData(const PreparsedData&) = delete;
    PreparsedData& operator=(const PreparsedData&) = delete;

    PHIDP_PREPARSED_DATA get() const { return data_; }

private:
    PHIDP_PREPARSED_DATA data_ = nullptr;
};

}  // namespace

// The list is built anew for every index, so a device plugged in between two
// calls is seen.
std::optional<std::string> WindowsPlatform::hid_path(int index) {
    if (index < 0 || index >= interfaces_listed) return std::nullopt;
    const HidInterfaceList list;
    if (!list.valid()) return std::nullopt;
    return list.path(index);
}

// Share mode 0: a device that another process holds does not open.
int WindowsPlatform::hid_open(const std::string& path) {
    const HANDLE device = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_OVERLAPPED, nullptr);
    if (device == INVALID_HANDLE_VALUE) return -1;
    return adopt(device, {.kind = HandleKind::hid});
}

std::optional<HidIdentity> WindowsPlatform::hid_identity(int handle) {
    if (!handles_.is(handle, HandleKind::hid)) return std::nullopt;
    HIDD_ATTRIBUTES attributes{};
    attributes.Size = sizeof attributes;
    if (!HidD_GetAttributes(system_handle(handle), &attributes)) return std::nullopt;
    return HidIdentity{attributes.VendorID, attributes.ProductID};
}

std::optional<std::uint16_t> WindowsPlatform::hid_feature_report_length(int handle) {
    if (!handles_.is(handle, HandleKind::hid)) return std::nullopt;
    const PreparsedData preparsed(system_handle(handle));
    if (preparsed.get() == nullptr) return std::nullopt;
    HIDP_CAPS caps{};
    if (HidP_GetCaps(preparsed.get(), &caps) == 0) return std::nullopt;
    return caps.FeatureReportByteLength;
}

bool WindowsPlatform::hid_set_feature(int handle, std::span<const std::uint8_t> report) {
    if (!handles_.is(handle, HandleKind::hid) || report.empty()) return false;
    // The call takes a writable buffer; the caller's report stays untouched.
    std::vector<std::uint8_t> buffer(report.begin(), report.end());
    return HidD_SetFeature(system_handle(handle), buffer.data(), static_cast<ULONG>(buffer.size())) != FALSE;
}

bool WindowsPlatform::hid_get_feature(int handle, std::span<std::uint8_t> report) {
    if (!handles_.is(handle, HandleKind::hid) || report.empty()) return false;
    return HidD_GetFeature(system_handle(handle), report.data(), static_cast<ULONG>(report.size())) != FALSE;
}

}  // namespace qz::platform
