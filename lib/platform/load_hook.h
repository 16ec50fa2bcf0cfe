// Work the library does when the system loads it, before any export runs. The
// system's folder calls it from the system's own load hook, in the shared
// library only.
#pragma once

namespace qz {

void on_library_load();

}  // namespace qz
