// Words for the numbers the library returns.
#pragma once

#include <string>

namespace qzctl {

// "link: no reply within the read time (-17)", "terminal status 6A82", ...
std::string status_text(int result);

// The meaning of a card's status words SW1 SW2: "success", "record not found", ...
std::string status_word_meaning(unsigned status_word);

}  // namespace qzctl
