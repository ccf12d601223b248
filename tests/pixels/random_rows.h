// Random numbers, and rows of random pixels in every layout that pixels may have in memory.
#pragma once

#include "render/pixels/row_converters.h"
#include "render/pixels/versions.h"
#include "tests/support/fenced_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>
#include <span>
#include <vector>

namespace talx::test {

// Numbers that are others in every run unless --gtest_random_seed=N asks for those of a certain run; a fuzzer
// gives the first of them itself.
class Random {
public:
    explicit Random(unsigned caseNumber, std::span<const std::uint8_t> given = {})
        : number(caseNumber), engine_(number + 1000003u * testing::UnitTest::GetInstance()->random_seed()),
          given_(given) {}

    const unsigned number;

    // From now on the numbers of this step, whatever was drawn before.
    void restart(unsigned step) {
        engine_.seed(number + 1000003u * testing::UnitTest::GetInstance()->random_seed() + 7919u * step);
    }
    std::uint32_t word() {
        auto word = static_cast<std::uint32_t>(engine_());
        const auto some = given_.first(std::min(given_.size(), sizeof word));
        std::copy(some.begin(), some.end(), reinterpret_cast<std::uint8_t*>(&word));
        given_ = given_.subspan(some.size());
        return word;
    }
    // low to high, both included.
    int between(int low, int high) { return low + static_cast<int>(word() % (high - low + 1u)); }
    double real(double low, double high) { return low + (high - low) * (word() / 4294967296.0); }
    bool oneIn(int n) { return between(1, n) == 1; }
    template <class T>
    T oneOf(std::initializer_list<T> values) {
        return values.begin()[between(0, static_cast<int>(values.size()) - 1)];
    }
    // Bytes, the lowest, the middle and the highest value often among them.
    void fill(void* memory, std::size_t size) {
        std::generate_n(static_cast<std::uint8_t*>(memory), size, [this] {
            const auto bits = static_cast<std::uint32_t>(engine_());
            return static_cast<std::uint8_t>(bits % 4 ? bits >> 2 : "\0\x80\xFF\xFF"[bits >> 2 & 3]);
        });
    }

private:
    std::mt19937_64 engine_;
    std::span<const std::uint8_t> given_;
};

inline int setting(const char* name, int otherwise) {
    const char* const value = std::getenv(name);
    return value ? std::atoi(value) : otherwise;
}
// How much longer than usual the random and the long tests run.
inline int testFactor() {
    return std::max(setting("TALX_TEST_FACTOR", 1), 1);
}
// The number of the one case that is to be run, or -1.
inline int onlyCase() {
    return setting("TALX_TEST_CASE", -1);
}

// Runs cases 0, 1, 2, ..., each from random numbers of its own, until one fails; with TALX_TEST_CASE=N only
// case N.
template <class Run>
void runCases(unsigned count, const Run& run) {
    const unsigned first = std::max(onlyCase(), 0), end = onlyCase() < 0 ? count * testFactor() : first + 1;
    for (unsigned number = first; number < end && !testing::Test::HasFailure(); ++number) {
        Random random(number);
        run(random);
        EXPECT_FALSE(testing::Test::HasFailure())
            << "TALX_TEST_CASE=" << number
            << " and --gtest_random_seed=" << testing::UnitTest::GetInstance()->random_seed();
    }
}

inline InstructionSet randomInstructionSet(Random& random) {
    return random.oneOf({InstructionSet::Plain, InstructionSet::Avx2, InstructionSet::Avx512});
}

// Rows of random pixels against a fence: padded or not, stored in either direction, at any address. There are
// no pixels when a side is below 1.
class Rows {
public:
    Rows(Random& random, const FencedMemory& memory, int w, int h, int bytes)
        : width(w), height(h), pixelBytes(bytes) {
        const std::ptrdiff_t used = width > 0 && height > 0 ? width * bytes : 0;
        const std::ptrdiff_t distance = used + (random.oneIn(2) ? 0 : random.between(1, 9));
        const std::ptrdiff_t lastRow = used > 0 ? (height - 1) * distance : 0;
        size_ = lastRow + used;
        stride = random.oneIn(2) ? distance : -distance;
        lowest_ = random.oneIn(2) ? memory.begin() : memory.endingAtFence(size_);
        data = lowest_ + (stride < 0 ? lastRow : 0);
        random.fill(lowest_, size_);
    }

    int width, height, pixelBytes;
    std::uint8_t* data; // pixel (0, 0)
    std::ptrdiff_t stride;

    [[nodiscard]] std::uint8_t* at(std::int64_t x, std::int64_t y) const {
        return data + y * stride + x * pixelBytes;
    }
    [[nodiscard]] std::uint32_t value(std::int64_t x, std::int64_t y) const {
        std::uint32_t v = 0;
        std::memcpy(&v, at(x, y), pixelBytes);
        return v;
    }
    operator PixelRows() const { return {data, stride}; }
    operator ConstPixelRows() const { return {data, stride}; }
    operator PlaneView() const { return {data, stride, {width, height}}; }

    // draw must make every pixel of new random rows what pixelAt(x, y) has said before, and leave what lies
    // between the rows.
    template <class PixelAt, class Draw>
    void check(Random& random, const PixelAt& pixelAt, const Draw& draw) {
        random.fill(lowest_, size_);
        std::vector<std::uint8_t> expected(lowest_, lowest_ + size_);
        for (int i = 0; i < width * std::max(height, 0); ++i) {
            const std::uint32_t pixel = pixelAt(i % width, i / width);
            std::memcpy(&expected[at(i % width, i / width) - lowest_], &pixel, pixelBytes);
        }
        // The stack is in any of the phases in which 64-bit Windows may call a function.
        *static_cast<volatile char*>(__builtin_alloca(16 * random.between(1, 4))) = 0;
        draw();
        const auto [byte, seen] = std::mismatch(expected.begin(), expected.end(), lowest_);
        ASSERT_TRUE(byte == expected.end()) << seen - data << " bytes from pixel (0, 0)";
    }

private:
    std::uint8_t* lowest_; // the rows' first byte in memory
    std::size_t size_;
};

} // namespace talx::test
