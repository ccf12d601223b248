// The test program's operator new.
#include "tests/pixels/failing_new.h"

#include <algorithm>
#include <cstdlib>

using talx::test::Allocations;

void* operator new(std::size_t size) {
    Allocations::largest = std::max(Allocations::largest, size);
    const bool fail = Allocations::untilFailure >= 0 && Allocations::untilFailure-- == 0;
    if (void* const memory = fail ? nullptr : std::malloc(std::max<std::size_t>(size, 1))) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
