// The cases of the pixel tests, their random numbers chosen by the fuzzer.
#include "tests/pixels/random_rows.h"

namespace talx::test {
void CHECK(Random& random);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    testing::GTEST_FLAG(break_on_failure) = true;
    talx::test::Random random(0, {data, size});
    talx::test::CHECK(random);
    return 0;
}
