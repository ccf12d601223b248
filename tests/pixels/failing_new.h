// Making memory run out.
#pragma once

#include <cstddef>
#include <functional>

namespace talx::test {

// Runs an operation again and again, its first, second, ... operator new failing, until none fails. After
// each failure the check is made. Returns the largest size that the operation asked for when it succeeded.
std::size_t withEveryAllocationFailing(
    const std::function<void()>& operation, const std::function<void()>& check = [] {});

} // namespace talx::test
