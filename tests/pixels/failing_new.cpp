// The test program's operator new, which fails on demand.
#include "tests/pixels/failing_new.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

static std::int64_t untilFailure = -1; // so many allocations succeed before one fails; below 0 all do
static std::size_t largest = 0;

void* operator new(std::size_t size) {
    largest = std::max(largest, size);
    void* const memory = untilFailure-- == 0 ? nullptr : std::malloc(size);
    return memory ? memory : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*unused*/) noexcept {
    return std::malloc(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace talx::test {

std::size_t withEveryAllocationFailing(const std::function<void()>& operation,
                                       const std::function<void()>& check) {
    for (int n = 0;; ++n) {
        try {
            largest = 0;
            untilFailure = n;
            operation();
            EXPECT_LE(0, std::exchange(untilFailure, -1)) << "failure " << n << " was swallowed";
            return largest;
        } catch (const std::bad_alloc&) {
            check();
        }
    }
}

} // namespace talx::test
