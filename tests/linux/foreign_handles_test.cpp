// The Linux backend acts only on descriptors it opened: not on the standard
// streams, nor on a file the host program opened itself.
#include <fcntl.h>

#include "sim/core/unique_fd.h"
#include "support/foreign_handles.h"

namespace qz::test {
namespace {

TEST(LinuxHandles, OnlyOwnHandlesAreActedOn) {
    const sim::UniqueFd hosts_own(::open("/dev/null", O_RDWR));
    ASSERT_TRUE(hosts_own);
    for (int handle : {0, 1, -1, hosts_own.get(), 0x7FFFFFF0})
        expect_foreign_handle_refused(platform::system_platform(), handle);
    EXPECT_NE(::fcntl(hosts_own.get(), F_GETFD), -1) << "the host's file was closed";
}

}  // namespace
}  // namespace qz::test
