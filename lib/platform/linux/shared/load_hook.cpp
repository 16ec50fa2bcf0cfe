// The shared object's constructor runs the library's load-time work.
#include "platform/load_hook.h"

namespace {

__attribute__((constructor)) void on_load() { qz::on_library_load(); }

}  // namespace
