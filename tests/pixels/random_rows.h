// Random numbers, and rows of random pixels in every layout that pixels may have in memory.
#pragma once

#include "render/pixels/pixel_format.h"
#include "tests/support/fenced_memory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

namespace talx::test {

// The same numbers in every run; --gtest_shuffle with --gtest_random_seed=N makes others.
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
    // Bytes with runs of the lowest, the highest and the middle value among them.
    void fill(void* memory, std::size_t size) {
        auto* const bytes = static_cast<std::uint8_t*>(memory);
        for (std::size_t i = 0; i < size;) {
            const int kind = between(0, 5);
            for (const std::size_t end = std::min<std::size_t>(size, i + between(1, 12)); i < end; ++i) {
                bytes[i] = static_cast<std::uint8_t>(kind == 0   ? 0
                                                     : kind == 1 ? 255
                                                     : kind == 2 ? 128
                                                                 : word());
            }
        }
    }

private:
    std::mt19937_64 engine_;
};

// A pixel or table entry as the little-endian number in its bytes.
template <class Entry>
std::uint32_t toNumber(const Entry& entry) {
    std::uint32_t number = 0;
    std::memcpy(&number, &entry, sizeof entry);
    return number;
}

// Rows of random pixels against a fence: padded or not, stored in either direction, at any address.
struct Rows {
    Rows(Random& random, const FencedMemory& memory, int w, int h, int bytes)
        : width(std::max(w, 0)), height(std::max(h, 0)), pixelBytes(bytes) {
        const std::ptrdiff_t used = std::ptrdiff_t{width} * bytes;
        const std::ptrdiff_t distance = used + (random.oneIn(2) ? 0 : random.between(1, 9));
        const std::ptrdiff_t lastRow = std::max(height - 1, 0) * distance;
        const bool upward = random.oneIn(2);
        size = width > 0 && height > 0 ? lastRow + used : 0;
        lowest = random.oneIn(2) ? memory.begin() : memory.endingAtFence(size);
        data = lowest + (upward && size > 0 ? lastRow : 0);
        stride = upward ? -distance : distance;
        random.fill(lowest, size);
    }

    [[nodiscard]] std::uint8_t* at(std::int64_t x, std::int64_t y) const {
        return data + y * stride + x * pixelBytes;
    }
    [[nodiscard]] std::uint32_t value(std::int64_t x, std::int64_t y) const {
        std::uint32_t v = 0;
        std::memcpy(&v, at(x, y), pixelBytes);
        return v;
    }
    template <class Action>
    void forEachPixel(const Action& action) const {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                action(x, y);
            }
        }
    }
    operator PixelRows() const { return {data, stride}; }
    operator ConstPixelRows() const { return {data, stride}; }
    operator PlaneView() const { return {data, stride, width, height}; }

    int width, height, pixelBytes;
    std::size_t size;
    std::uint8_t* lowest;
    std::uint8_t* data; // pixel (0, 0)
    std::ptrdiff_t stride;
};

// What rows must hold after some code has written into them: to begin with, what they hold now.
class ExpectedRows {
public:
    explicit ExpectedRows(const Rows& rows) : rows_(rows), bytes_(rows.lowest, rows.lowest + rows.size) {}

    void set(int x, int y, std::uint32_t value) {
        std::memcpy(bytes_.data() + (rows_.at(x, y) - rows_.lowest), &value, rows_.pixelBytes);
    }
    // Whether they do, every byte between the rows included.
    [[nodiscard]] testing::AssertionResult areThere() const {
        for (std::size_t i = 0; i < bytes_.size(); ++i) {
            if (bytes_[i] != rows_.lowest[i]) {
                return testing::AssertionFailure()
                       << "byte " << rows_.lowest + i - rows_.data << " from pixel (0, 0) of " << rows_.width
                       << " x " << rows_.height << " pixels with stride " << rows_.stride << " is "
                       << int{rows_.lowest[i]} << " instead of " << int{bytes_[i]};
            }
        }
        return testing::AssertionSuccess();
    }

private:
    const Rows& rows_;
    std::vector<std::uint8_t> bytes_;
};

} // namespace talx::test
