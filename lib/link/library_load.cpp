// Old log folders are cleaned before any export runs, and the card lock exists
// from load to unload.
#include "link/card_lock.h"
#include "link/log.h"
#include "platform/load_hook.h"
#include "platform/paths.h"

namespace qz {

void on_library_load() {
    link::clean_log_folders(platform::log_root());
    link::card_lock();
}

}  // namespace qz
