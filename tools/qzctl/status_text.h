// Words for the numbers the library returns.
#pragma once

#include <string>

namespace qzctl {

// "link: no reply within the read time (-17)", "terminal status 6A82", ...
std::string status_text(int result);

}  // namespace qzctl
