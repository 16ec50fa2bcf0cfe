// Bytes written in hexadecimal in tests, blanks allowed: "02 00 03".
#pragma once

#include <string_view>

#include "support/scripted_terminal.h"

namespace qz::test {

Bytes hex(std::string_view text);

}  // namespace qz::test
