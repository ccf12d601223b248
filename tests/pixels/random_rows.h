// Random numbers, and rows of random pixels in every layout that pixels may have in memory.
#pragma once

#include "render/pixels/row_converters.h"
#include "tests/support/fenced_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <random>
#include <vector>

namespace talx::test {

// Numbers that are others in every run unless --gtest_random_seed=N asks for those of a certain run.
class Random {
public:
    explicit Random(unsigned number)
        : engine_(number + 1000003u * testing::UnitTest::GetInstance()->random_seed()) {}

    std::uint32_t word() { return static_cast<std::uint32_t>(engine_()); }
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
            return static_cast<std::uint8_t>(oneIn(4) ? oneOf({0, 128, 255}) : static_cast<int>(word()));
        });
    }

private:
    std::mt19937_64 engine_;
};

inline Extent randomExtent(Random& random) {
    return {random.between(-1, random.oneOf({9, 60})), random.between(-1, 9)};
}

// Runs cases 0, 1, 2, ..., each with random numbers of its own, until one fails.
template <class Run>
void forEachCase(unsigned count, const Run& run) {
    const int seed = testing::UnitTest::GetInstance()->random_seed();
    for (unsigned number = 0; number < count; ++number) {
        Random random(number);
        ASSERT_NO_FATAL_FAILURE(run(random)) << "case " << number << ", --gtest_random_seed=" << seed;
    }
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
        const std::size_t size = lastRow + used;
        stride = random.oneIn(2) ? distance : -distance;
        lowest_ = random.oneIn(2) ? memory.begin() : memory.endingAtFence(size);
        data = lowest_ + (stride < 0 ? lastRow : 0);
        random.fill(lowest_, size);
        expected_.assign(lowest_, lowest_ + size);
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

    // Every pixel is to become pixelAt(x, y).
    template <class PixelAt>
    void expect(const PixelAt& pixelAt) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const std::uint32_t pixel = pixelAt(x, y);
                std::memcpy(&expected_[at(x, y) - lowest_], &pixel, pixelBytes);
            }
        }
    }
    // How far from pixel (0, 0) the first byte is that does not hold what was expected or, between the rows
    // and without expectations, what it always held. Nothing when there is no such byte.
    [[nodiscard]] std::optional<std::ptrdiff_t> wrongByte() const {
        const auto [byte, seen] = std::mismatch(expected_.begin(), expected_.end(), lowest_);
        return byte == expected_.end() ? std::nullopt : std::optional(seen - data);
    }

private:
    std::uint8_t* lowest_; // the rows' first byte in memory
    std::vector<std::uint8_t> expected_;
};

} // namespace talx::test
