// A view is moved, and parts of it are drawn anew, at random: it must always be as if drawn whole.
#include "viewer/view/damage.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace talview {
namespace {

constexpr long width = 30;
constexpr long height = 20;

// A view whose pixels tell of the image below, or of what is pinned above it.
struct Drawn {
    std::array<std::array<int, width>, height> pixels{};
    void draw(const Box& box, const auto& pixelAt) {
        for (long y = box.top; y < box.bottom; ++y) {
            for (long x = box.left; x < box.right; ++x) {
                pixels.at(y).at(x) = pixelAt(x, y);
            }
        }
    }
    void move(long dx, long dy) {
        const auto before = pixels;
        for (long y = 0; y < height; ++y) {
            for (long x = 0; x < width; ++x) {
                if (Box{0, 0, width, height}.holds(x - dx, y - dy)) {
                    pixels[y][x] = before[y - dy][x - dx];
                }
            }
        }
    }
};

TEST(Damage, RepairedViewsAreAsIfDrawnWhole) {
    std::mt19937 random(7);
    const auto between = [&](long low, long high) {
        return std::uniform_int_distribution<long>(low, high)(random);
    };
    Damage damage;
    damage.resize(width, height);
    std::map<std::pair<long, long>, int> image;
    std::vector<Box> pinned, wasPinned;
    long left = 0, top = 0, whole = 0;
    Drawn drawn;
    const auto pixelAt = [&](long x, long y) {
        for (const Box& box : pinned) {
            if (box.holds(x, y)) {
                return static_cast<int>(-1 - x - box.left * 1000);
            }
        }
        return image[{x - left, y - top}];
    };
    for (int i = 0; i < 4000; ++i) {
        for (long steps = between(0, 3); steps > 0; --steps) {
            const Box box{between(-5, 30), between(-5, 20), between(0, 40), between(0, 25)};
            switch (between(0, 3)) {
            case 0: {
                const long dx = between(-9, 9), dy = between(-9, 9);
                left += dx;
                top += dy;
                damage.shift(dx, dy);
                break;
            }
            case 1:
                for (long y = box.top; y < box.bottom; ++y) {
                    for (long x = box.left; x < box.right; ++x) {
                        image[{x - left, y - top}] = i;
                    }
                }
                damage.add(box);
                break;
            case 2:
                damage.add(box); // uncovered, say
                break;
            case 3:
                for (const Box& there : pinned) {
                    damage.add(there);
                }
                pinned.assign(1, box);
                damage.add(box);
                break;
            }
        }
        const Repair repair = damage.take(wasPinned, pinned);
        wasPinned = pinned;
        drawn.move(repair.dx, repair.dy);
        std::array<std::array<int, width>, height> times{};
        for (const Box& box : repair.boxes) {
            drawn.draw(box, pixelAt);
            for (long y = box.top; y < box.bottom; ++y) {
                for (long x = box.left; x < box.right; ++x) {
                    ASSERT_EQ(++times.at(y).at(x), 1);
                }
            }
            whole += box == Box{0, 0, width, height};
        }
        for (long y = 0; y < height; ++y) {
            for (long x = 0; x < width; ++x) {
                ASSERT_EQ(drawn.pixels[y][x], pixelAt(x, y)) << i << ": " << x << "," << y;
            }
        }
        ASSERT_TRUE(damage.isEmpty());
    }
    EXPECT_LT(whole, 400);
}

} // namespace
} // namespace talview
