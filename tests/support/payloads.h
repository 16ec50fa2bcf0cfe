// Request payloads put together from parts in tests, and exports checked by the
// payloads they send.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <vector>

#include "support/scripted_terminal.h"

namespace qz::test {

inline Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// An export called with its arguments bound, and the request payload it must send.
struct PayloadCase {
    std::function<int()> call;
    Bytes payload;
};

// Each call succeeds and its request carries exactly its payload.
inline void expect_payloads(const ScriptedTerminal& os, const std::vector<PayloadCase>& cases) {
    for (std::size_t i = 0; i < cases.size(); ++i) {
        ASSERT_EQ(cases[i].call(), 0) << "case " << i;
        EXPECT_EQ(os.last_payload(), cases[i].payload) << "case " << i;
    }
}

}  // namespace qz::test
