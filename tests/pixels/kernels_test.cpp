// The resampling kernels in every version against the model, between fences.
#include "render/pixels/kernels.h"

#include "tests/model/model.h"
#include "tests/pixels/random_rows.h"

#include <bit>

namespace talx::test {
namespace {

// By method and bytes per pixel - 1.
constexpr decltype(&resampleNearest8) kernels[][2] = {{resampleNearest8, resampleNearest16},
                                                      {resampleCentre8, resampleCentre16}};

double randomScale(Random& random) {
    const double nudge = random.oneOf({0.0, 0.0, 5e-11, -5e-11, 1e-10, -1e-10, 1.5e-10, -1.5e-10, 3e-16});
    const double wild = random.oneOf<double>(
        {0.0, 1e-320, 1e-300, 1e-9, 0.9999999999, 1e12, 4e18, 1e300, HUGE_VAL, NAN, -1.5});
    const auto anything = std::bit_cast<double>(std::uint64_t{random.word()} << 32 | random.word());
    return random.oneOf({random.between(1, 9) + nudge, 1.0 / random.between(2, 12) + nudge,
                         random.between(1, 30) / static_cast<double>(random.between(1, 30)),
                         random.real(0.02, 1.0), random.real(1.0, 2.0), random.real(1.0, 12.0),
                         random.between(10, 3000) + nudge, std::exp(random.real(0.0, 25.0)), wild, anything});
}

// Part of the length of a scaled image, at its ends more often than not, or something far from it.
void randomPart(Random& random, int longest, std::int32_t length, std::int32_t& from, std::int32_t& to) {
    const int size = random.between(random.oneIn(30) ? 0 : 1, random.oneOf({4, longest}));
    const int rest = std::max(length, size) - size;
    const int beside = random.oneOf({-1, -7, -40, 39, 1000, 1 << 20, INT32_MAX - 300, -INT32_MAX, INT32_MIN});
    from = random.oneOf({0, rest, random.between(0, rest), random.between(0, rest), beside});
    to = from + size;
}

} // namespace

void checkKernel(Random& random) {
    static const FencedMemory sourceMemory(1 << 17), destinationMemory(1 << 16), hugeMemory(6'000'000);
    static const Rows huge = [] {
        Random ofItsOwn(0);
        Rows rows(ofItsOwn, hugeMemory, 3'000'000, 1, 2);
        rows.height = INT32_MAX; // the same row again and again
        rows.stride = 0;
        return rows;
    }();
    const auto side = [&] {
        return random.between(random.oneIn(30) ? -1 : 1, random.oneOf({3, 40, 40, 40, 200}));
    };
    const Rows small(random, sourceMemory, side(), side(), random.between(1, 2));
    const Rows& source = random.oneIn(20) ? huge : small;
    const double scale = randomScale(random);
    const Rect whole = placeScaled(0, 0, {source.width, source.height}, scale);
    ASSERT_EQ((model::Rect{0, 0, whole.right, whole.bottom}),
              model::place(0, 0, source.width, source.height, scale));
    Rect target;
    randomPart(random, random.oneIn(15) ? 300 : 40, whole.right, target.left, target.right);
    randomPart(random, 40, whole.bottom, target.top, target.bottom);
    const int method = random.between(0, 1), bytes = source.pixelBytes;
    const auto width = static_cast<int>(target.width()), height = static_cast<int>(target.height());
    Rows destination(random, destinationMemory, width, height, bytes);
    const model::Rect wide{target.left, target.top, target.right, target.bottom};
    const auto expected = [&](int x, int y) {
        const auto p = source.width > 0 && source.height > 0
                           ? model::sourceOf(source.width, source.height, scale, wide, method, wide.left + x,
                                             wide.top + y)
                           : std::nullopt;
        return p ? source.value(p->x, p->y) : destination.value(x, y);
    };
    limitInstructionSet(randomInstructionSet(random));
    SCOPED_TRACE(testing::Message() << "method " << method << ", scale " << scale);
    destination.check(random, expected,
                      [&] { kernels[method][bytes - 1](source, destination, scale, target); });
}

TEST(Kernels, GiveWhatTheModelGives) {
    runCases(30000, checkKernel);
}

} // namespace talx::test
