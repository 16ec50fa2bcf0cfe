// Request payloads put together from parts in tests.
#pragma once

#include <initializer_list>

#include "support/scripted_terminal.h"

namespace qz::test {

inline Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

}  // namespace qz::test
