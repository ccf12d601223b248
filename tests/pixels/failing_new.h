// The test program's operator new, which fails on demand and notes how much is asked for.
#pragma once

#include <cstddef>
#include <gtest/gtest.h>
#include <new>

namespace talx::test {

struct Allocations {
    static inline int untilFailure = -1; // so many succeed before one fails; below 0 all do
    static inline std::size_t largest = 0;
};

// Runs an operation again and again, its first, second, ... allocation failing, until none fails. After each
// failure the check is made. Returns how many failures there were.
template <class Operation, class Check>
int withEveryAllocationFailing(const Operation& operation, const Check& checkAfterFailure) {
    for (int n = 0;; ++n) {
        Allocations::untilFailure = n;
        try {
            operation();
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(-1, Allocations::untilFailure);
            checkAfterFailure();
            continue;
        }
        EXPECT_LE(0, Allocations::untilFailure) << "the failure of allocation " << n << " was swallowed";
        Allocations::untilFailure = -1;
        return n;
    }
}

} // namespace talx::test
