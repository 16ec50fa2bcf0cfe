// Every operation of a platform backend refuses a handle it never handed out,
// and leaves what is behind that number alone.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "platform/platform.h"

namespace qz::test {

inline void expect_foreign_handle_refused(platform::Platform& os, int handle) {
    std::uint8_t byte = 0;
    std::uint8_t report[8] = {6};
    EXPECT_FALSE(os.serial_write(handle, 0x02)) << handle;
    EXPECT_EQ(os.serial_read(handle, byte), platform::ByteRead::failed) << handle;
    EXPECT_FALSE(os.hid_set_feature(handle, report)) << handle;
    EXPECT_FALSE(os.hid_get_feature(handle, report)) << handle;
    EXPECT_FALSE(os.hid_identity(handle)) << handle;
    EXPECT_FALSE(os.hid_feature_report_length(handle)) << handle;
    EXPECT_FALSE(os.close(handle)) << handle;
}

}  // namespace qz::test
