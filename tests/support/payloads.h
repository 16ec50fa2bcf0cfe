// Request payloads in tests: the payload inside a recorded request frame, and
// payloads put together from parts.
#pragma once

#include <initializer_list>

#include "support/scripted_platform.h"

namespace qz::test {

inline Bytes payload_of(const Bytes& frame) { return Bytes(frame.begin() + 3, frame.end() - 2); }

inline Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

}  // namespace qz::test
