// Serves a serial endpoint on a pseudo-terminal: the library opens the slave
// side (through a link named like the port) as it would open a serial port.
#pragma once

#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "sim/endpoints/serial_endpoint.h"
#include "sim/core/unique_fd.h"

namespace qz::sim {

class PtyServer {
public:
    // Opens the pair and creates `link` -> slave (an old link there is
    // replaced). Throws std::system_error. `lock` guards the endpoint and its
    // terminal against other servers.
    PtyServer(SerialEndpoint& endpoint, std::mutex& lock, std::filesystem::path link);
    PtyServer(const PtyServer&) = delete;
    PtyServer& operator=(const PtyServer&) = delete;
    // Stops serving and removes the link.
    ~PtyServer();

    const std::string& slave_path() const { return slave_path_; }
    const std::filesystem::path& link() const { return link_; }

private:
    void serve();
    bool exchange(short events);

    SerialEndpoint& endpoint_;
    std::mutex& lock_;
    std::filesystem::path link_;
    UniqueFd master_;
    // Held open so the master never sees a hang-up between the host's opens.
    UniqueFd slave_;
    UniqueFd stop_;
    std::string slave_path_;
    std::vector<std::uint8_t> unsent_;
    std::thread thread_;
};

}  // namespace qz::sim
