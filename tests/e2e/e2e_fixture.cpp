#include "e2e/e2e_fixture.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <stdexcept>

#include "link/link_state.h"
#include "qz_32.h"

namespace qz::test {
namespace fs = std::filesystem;
namespace {

void skip_because(const std::string& reason) { GTEST_SKIP() << reason; }
void fail_because(const std::string& reason) { FAIL() << reason; }

}  // namespace

std::string link_name(Link link) { return link == Link::hid ? "Hid" : "Serial"; }
void PrintTo(Link link, std::ostream* out) { *out << link_name(link); }

Device::Device(unsigned char port, int baud) : handle_(open_device(port, baud)) {}

Device::~Device() { close(); }

int Device::close() {
    if (handle_ <= 1) return -1;
    const int result = close_device(handle_);
    handle_ = 0;
    return result;
}

fs::path descriptor_target(int fd) {
    std::error_code error;
    return fs::read_symlink("/proc/self/fd/" + std::to_string(fd), error);
}

bool held_open(const fs::path& file) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd", error)) {
        std::error_code ignored;
        if (fs::read_symlink(entry.path(), ignored) == file) return true;
    }
    return false;
}

OpenWatch::OpenWatch(const fs::path& file) : inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (inotify_ < 0 || inotify_add_watch(inotify_, file.c_str(), IN_OPEN) < 0)
        throw std::runtime_error("cannot watch " + file.string());
}

OpenWatch::~OpenWatch() { ::close(inotify_); }

bool OpenWatch::opened() const {
    pollfd events{inotify_, POLLIN, 0};
    return ::poll(&events, 1, 0) > 0;
}

void SimulatorTest::SetUp() { link::reset_link_state(); }

void SimulatorTest::TearDown() {
    sim.reset();
    link::reset_link_state();
}

bool SimulatorTest::start(Link link, const nlohmann::json& faults) {
    try {
        sim = std::make_unique<Qzsim>(QzsimOptions{.hid = link == Link::hid, .faults = faults});
    } catch (const FuseUnavailable& reason) {
        skip_because("the HID node needs FUSE, which does not work here: " + std::string(reason.what()));
        return false;
    } catch (const std::exception& error) {
        fail_because(error.what());
        return false;
    }
    hid_env_.emplace("QZ_32_HIDRAW_DIR", sim->hid_dir().string());
    ports_env_.emplace("QZ_32_PORTS_DIR", sim->ports_dir().string());
    return true;
}

nlohmann::json fault_once(std::uint8_t instruction, nlohmann::json fault) {
    fault["class"] = 0;
    fault["instruction"] = instruction;
    fault["times"] = 1;
    return fault;
}

}  // namespace qz::test
