// Load and unload of the shared library: old log folders are cleaned before any
// export runs, and the card lock exists from load to unload.
#include "link/card_lock.h"
#include "link/log.h"
#include "platform/paths.h"

namespace {

__attribute__((constructor)) void on_load() {
    qz::link::clean_log_folders(qz::platform::log_root());
    qz::link::card_lock();
}

}  // namespace
