// Parts of a view as talxrend.hpp has an owner redraw them show what the whole would, by either sampling
// method.
#include "tests/pixels/random_rows.h"
#include "tests/support/engine_bits.h"
#include "tests/support/module.h"

#include <talxrend.hpp>

namespace talx::test {
namespace {

std::vector<std::uint32_t> pixels(const talxrend::Engine& engine, const RECT& r) {
    const BitmapBits bits = compositionBits(engine.object().Get());
    std::vector<std::uint32_t> values;
    for (int y = r.top; y < r.bottom; ++y) {
        for (int x = r.left; x < r.right; ++x) {
            values.push_back(bits.pixel(x, y));
        }
    }
    return values;
}

TEST(SdkParts, AlignedOnesEqualTheWhole) {
    const TestWindow window(50, 40, 400, 300);
    const talxrend::Engine engine(talxrend::create<ITalRenderEngine2>(__uuidof(TalGDIRenderEngine)),
                                  window.handle(), 1, [](long, const RECT&) {});
    const RECT view = engine.extent();
    int otherwise = 0; // parts that would not have been equal without
    runCases(400, [&](Random& random) {
        const SIZE size{random.between(1, 200), random.between(1, 200)};
        std::vector<std::uint8_t> values(size.cx * size.cy);
        std::ranges::generate(values, [&] { return static_cast<std::uint8_t>(random.between(0, 255)); });
        const auto image = talxrend::wrap8Grey(size, {values.data(), size.cx});
        const double scale = random.oneOf({3.0, 5.0, 7.0, 17.3, 8.1, 0.37, random.between(1, 4000) / 200.0});
        const POINT at{random.between(-200, 200), random.between(-200, 200)};
        const auto draw = [&](const RECT& r) {
            engine.fill(0, view, 0);
            engine.drawImage(0, image.Get(), at, scale, r);
        };
        RECT part{random.between(0, 399), random.between(0, 299), 0, 0};
        part.right = random.between(part.left + 1, 400);
        part.bottom = random.between(part.top + 1, 300);
        engine.putScalingMethod(random.oneOf({talRenderEngineScalingMethodNoInterpolation,
                                              talRenderEngineScalingMethodBilinearInterpolation}));
        draw(view);
        const auto whole = pixels(engine, part);
        draw(part);
        otherwise += pixels(engine, part) != whole;
        draw(talxrend::alignedPart(part, talxrend::coveredBy(size, at, scale), view));
        EXPECT_TRUE(pixels(engine, part) == whole) << "scale " << scale;
    });
    EXPECT_TRUE(otherwise > 0 || onlyCase() >= 0) << "there is nothing to align";
}

} // namespace
} // namespace talx::test
