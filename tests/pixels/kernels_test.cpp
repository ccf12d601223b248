// The resampling kernels against the model, between fences.
#include "render/pixels/kernels.h"

#include "tests/model/model.h"
#include "tests/pixels/failing_new.h"
#include "tests/pixels/random_rows.h"

namespace talx::test {
namespace {

constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();

class Kernels : public testing::TestWithParam<std::tuple<int, int>> { // method, bytes per pixel
protected:
    const int method = std::get<0>(GetParam());
    const int bytes = std::get<1>(GetParam());
    const FencedMemory sourceMemory{65536}, destinationMemory{65536};

    void resample(const PlaneView& source, const PixelRows& destination, double scale,
                  const Rect& target) const {
        if (method == model::centreMethod) {
            (bytes == 1 ? resampleCentre8 : resampleCentre16)(source, destination, scale, target);
        } else {
            (bytes == 1 ? resampleNearest8 : resampleNearest16)(source, destination, scale, target);
        }
    }

    // view is source, or its only row many times.
    testing::AssertionResult matches(Random& random, const Rows& source, const PlaneView& view, double scale,
                                     const Rect& t) const {
        const Rows destination(random, destinationMemory, static_cast<int>(t.width()),
                               static_cast<int>(t.height()), bytes);
        ExpectedRows expected(destination);
        destination.forEachPixel([&](int x, int y) {
            if (const auto p =
                    model::sourceOf(view.width, view.height, scale, {t.left, t.top, t.right, t.bottom},
                                    method, std::int64_t{t.left} + x, std::int64_t{t.top} + y)) {
                expected.set(x, y, source.value(p->x, view.stride == 0 ? 0 : p->y));
            }
        });
        resample(view, destination, scale, t);
        return expected.areThere() << ", source " << view.width << " x " << view.height << ", scale "
                                   << std::hexfloat << scale << std::dec << ", target " << t.left << ", "
                                   << t.top << ", " << t.right << ", " << t.bottom;
    }
};

double randomScale(Random& random) {
    const double nudge = random.oneOf({0.0, 0.0, 5e-11, -5e-11, 1e-10, -1e-10, 1.5e-10, -1.5e-10, 3e-16});
    switch (random.between(0, 7)) {
    case 0:
        return random.between(1, 9) + nudge;
    case 1:
        return 1.0 / random.between(2, 12) + nudge;
    case 2:
        return random.between(1, 30) / static_cast<double>(random.between(1, 30));
    case 3:
        return random.real(0.02, 1.0);
    case 4:
        return random.real(1.0, 2.0);
    case 5:
        return random.real(1.0, 12.0);
    case 6:
        return random.between(10, 3000) + nudge;
    default:
        return std::exp(random.real(0.0, 25.0));
    }
}

// Part of the length of a scaled image, at its ends more often than not.
void randomPart(Random& random, int length, std::int32_t& from, std::int32_t& to) {
    const int size = std::min(length, random.oneIn(6) ? random.between(1, 4) : random.between(1, 45));
    from =
        random.oneOf({0, length - size, random.between(0, length - size), random.between(0, length - size)});
    to = from + size;
}

TEST_P(Kernels, GiveWhatTheModelGives) {
    for (unsigned number = 0; number < 12000; ++number) {
        Random random(number);
        const auto side = [&] {
            return random.oneIn(5) ? random.between(1, 3) : random.between(1, 40);
        };
        const Rows source(random, sourceMemory, side(), side(), bytes);
        const double scale = randomScale(random);
        if (const Rect whole = placeScaled(0, 0, source.width, source.height, scale); !whole.empty()) {
            Rect target;
            randomPart(random, whole.right, target.left, target.right);
            randomPart(random, whole.bottom, target.top, target.bottom);
            ASSERT_TRUE(matches(random, source, source, scale, target)) << "case " << number;
        }
    }
}

TEST_P(Kernels, HoldEveryIndexInsideTheSourceWhateverTheScaleAndTarget) {
    const auto corner = [](Random& random) {
        return random.oneOf({0, -1, -7, -40, 39, 1000, 1 << 20, highest - 30, -highest, -highest - 1});
    };
    for (unsigned number = 0; number < 4000; ++number) {
        Random random(number);
        const Rows source(random, sourceMemory, random.between(1, 40), random.between(1, 40), bytes);
        const double size =
            random.oneOf({0.0, 1e-320, 1e-300, 1e-9, 0.01, 1.0 / 3.0, 0.9999999999, 1.0, 3.0, 1e6, 1e12, 4e18,
                          1e300, infinity, infinity - infinity, randomScale(random)});
        const std::int32_t left = corner(random), top = corner(random);
        const Rect target{left, top, left + random.between(0, 30), top + random.between(0, 30)};
        ASSERT_TRUE(matches(random, source, source, random.oneIn(4) ? -size : size, target))
            << "case " << number;
    }
}

TEST_P(Kernels, WriteNothingWithoutSourceOrTarget) {
    Random random(1);
    const Rows destination(random, destinationMemory, 5, 5, bytes), source(random, sourceMemory, 5, 5, bytes);
    const ExpectedRows unchanged(destination);
    for (const auto& [width, height] :
         {std::pair{0, 5}, std::pair{5, 0}, std::pair{-5, 5}, std::pair{5, -5}}) {
        resample({source.data, source.stride, width, height}, destination, 2.0, {0, 0, 5, 5});
        resample({nullptr, 0, width, height}, destination, 2.0, {0, 0, 5, 5});
    }
    for (const Rect& empty : {Rect{}, Rect{3, 0, 3, 5}, Rect{5, 5, 0, 0}, Rect{0, 4, 5, 2}}) {
        resample(source, destination, 2.0, empty);
    }
    EXPECT_TRUE(unchanged.areThere());
}

// Positions near the end of 32 bits stay exact, and no allocation follows the size of the image.
TEST_P(Kernels, DrawHugeImagesAtNoMoreCost) {
    Random random(2);
    const FencedMemory memory(bytes * 3'000'000);
    const Rows row(random, memory, 3'000'000, 1, bytes);
    const PlaneView image{row.data, 0, row.width, highest};
    const Rows destination(random, destinationMemory, 7, 5, bytes);
    for (const double scale : {1e-5, 1.7e-4, 0.3}) {
        const Rect whole = placeScaled(0, 0, image.width, image.height, scale);
        const Rect target{whole.right - 7, whole.bottom - 5, whole.right, whole.bottom};
        EXPECT_TRUE(matches(random, row, image, scale, target));
        Allocations::largest = 0;
        resample(image, destination, scale, target);
        EXPECT_GE(1000u, Allocations::largest) << scale;
    }
}

TEST_P(Kernels, PassOnThatMemoryRanOut) {
    Random random(3);
    const Rows source(random, sourceMemory, 20, 20, bytes),
        destination(random, destinationMemory, 30, 30, bytes);
    EXPECT_LT(0, withEveryAllocationFailing(
                     [&] {
                         resample(source, destination, 1.7, {0, 0, 30, 30});
                     },
                     [] {}));
}

INSTANTIATE_TEST_SUITE_P(NearestAndCentre, Kernels,
                         testing::Combine(testing::Values(0, 1), testing::Values(1, 2)));

} // namespace
} // namespace talx::test
