// A terminal on the far side of a pseudo-terminal, reached through a COMn link in
// a ports folder: the library's real serial backend talks to it.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "support/scripted_platform.h"
#include "support/temp_dir.h"

namespace qz::test {

class PtyTerminal {
public:
    // `respond` gets each whole request frame and gives the bytes to send back.
    explicit PtyTerminal(std::function<Bytes(const Bytes&)> respond, const std::string& port_name = "COM1");
    ~PtyTerminal();
    PtyTerminal(const PtyTerminal&) = delete;
    PtyTerminal& operator=(const PtyTerminal&) = delete;

    const std::filesystem::path& ports_dir() const { return ports_.path(); }
    std::string slave_path() const { return slave_path_; }
    int requests() const { return requests_; }

private:
    void serve();

    TempDir ports_;
    int master_ = -1;
    int keep_slave_open_ = -1;  // so the master does not see a hang-up between opens
    std::string slave_path_;
    std::function<Bytes(const Bytes&)> respond_;
    std::atomic<bool> stop_{false};
    std::atomic<int> requests_{0};
    std::thread server_;
};

}  // namespace qz::test
