// Drawing with a real engine and with the model at once: images and arrays for the engine, and what its
// buffer must hold afterwards.
#pragma once

#include "tests/model/model.h"
#include "tests/random/engine_view.h"
#include "tests/support/test_image.h"

#include <limits>
#include <optional>

namespace talx::test {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr model::Rect everywhere{least, least, most, most};
constexpr HRESULT noPixelData = static_cast<HRESULT>(0x80044010);
constexpr HRESULT ownFailure = HRESULT_FROM_WIN32(ERROR_BUSY); // of an image that a test makes fail

template <class Values>
auto pick(Random& random, const Values& values) {
    return std::data(values)[random.between(0, static_cast<int>(std::size(values)) - 1)];
}

// A SAFEARRAY of the test's own. The engine must neither leave it locked nor destroy it.
struct TestArray {
    TestArray(VARTYPE type, ULONG count, LONG lowerBound = 0, UINT dimensions = 1) {
        SAFEARRAYBOUND bounds[2] = {{count, lowerBound}, {count, lowerBound}};
        array = SafeArrayCreate(type, dimensions, bounds);
    }
    template <class T>
    TestArray(VARTYPE type, const std::vector<T>& values)
        : TestArray(type, static_cast<ULONG>(values.size())) {
        std::copy(values.begin(), values.end(), static_cast<T*>(array->pvData));
    }
    ~TestArray() { EXPECT_EQ(S_OK, SafeArrayDestroy(array)) << "left locked"; }
    TestArray(const TestArray&) = delete;
    TestArray& operator=(const TestArray&) = delete;

    SAFEARRAY* array;
};

inline std::uint32_t rgbWord(model::Color c) {
    return 0xFF000000u | c.red << 16 | c.green << 8 | c.blue;
}
inline model::Color fromColorRef(COLORREF c) {
    return {GetRValue(c), GetGValue(c), GetBValue(c)};
}
inline COLORREF translated(OLE_COLOR ole) {
    COLORREF color = 0;
    OleTranslateColor(ole, nullptr, &color);
    return color;
}

// The entries of a colour map, as an array of 4-byte integers from 0 on.
using MapGetter = HRESULT (ITalRenderEngine2::*)(SAFEARRAY**);
inline std::vector<std::uint32_t> readMap(ITalRenderEngine2* engine, MapGetter get) {
    SAFEARRAY* array = nullptr;
    VARTYPE type = VT_EMPTY;
    EXPECT_EQ(S_OK, (engine->*get)(&array));
    EXPECT_EQ(S_OK, SafeArrayGetVartype(array, &type));
    EXPECT_EQ(VT_I4, type);
    EXPECT_EQ(1u, SafeArrayGetDim(array));
    EXPECT_EQ(0, array->rgsabound[0].lLbound);
    const auto* data = static_cast<std::uint32_t*>(array->pvData);
    const std::vector<std::uint32_t> values(data, data + array->rgsabound[0].cElements);
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
    return values;
}

struct ImageStore {
    FencedMemory planes[3]{FencedMemory{1 << 14}, FencedMemory{1 << 14}, FencedMemory{1 << 14}};
};

// A random image between fences, padded or not, stored in either direction, at any address; for the engine
// and for the model.
struct TwinImage {
    TwinImage(Random& random, const ImageStore& store, model::Kind kind, int width, int height,
              bool mask = true, int depthCode = 0)
        : twin{kind, {}, depthCode} {
        const bool wide = kind == model::Kind::grey16 || kind == model::Kind::range16;
        const int count = kind == model::Kind::color ? 3 : kind == model::Kind::range16 && mask ? 2 : 1;
        for (int i = 0; i < count; ++i) {
            const Rows rows(random, store.planes[i], width, height, wide && i == 0 ? 2 : 1);
            planes.push_back({rows.data, static_cast<long>(rows.stride)});
            auto& pixels = twin.planes.emplace_back(model::Plane{width, height, {}}).pixels;
            for (int p = 0; p < width * height; ++p) {
                pixels.push_back(static_cast<std::uint16_t>(rows.value(p % width, p / width)));
            }
        }
        image.emplace(static_cast<ImageKind>(static_cast<int>(kind) + 1), width, height, planes, depthCode);
    }

    model::Image twin;
    std::vector<ImagePlane> planes;
    std::optional<TestImage> image;
};

// A random fill, icon or image, drawn by an engine and by the model, all or in part. A wild one is anywhere
// at any scale.
struct Drawing {
    enum What { fill, icon, image };

    Drawing(Random& r, What drawn, bool wild, model::Kind kind = model::Kind::grey8)
        : what(drawn), picture(r, store, drawn == image ? kind : model::Kind::grey8, side(r), side(r),
                               r.oneIn(2), r.between(-1, 6)) {
        constexpr int limits[] = {least, least + 1, -1000000000, most - 60, most};
        constexpr double places[] = {10.7, -0.5, -3.99, -1e10, 2147483647.5, notANumber, infinity, -infinity};
        constexpr double wildScales[] = {1e9, 1e300, 1e-9, 0, -1.5, notANumber, infinity, -infinity};
        constexpr double scales[] = {1, 1, 1, 2, 3, 5, 17, 0.5, 0.25, 0.9999999999};
        constexpr double almost[] = {3.0000000000000004, 4.999999999999999, 1.00000000005, 1.0000000001};
        x = wild && r.oneIn(12) ? pick(r, limits) : r.between(-40, 39);
        y = wild && r.oneIn(12) ? pick(r, limits) : r.between(-30, 29);
        iconX = wild && r.oneIn(6) ? pick(r, places) : x + r.real(-0.9, 0.9);
        iconY = wild && r.oneIn(6) ? pick(r, places) : y + r.real(-0.9, 0.9);
        scale = r.oneIn(3)           ? r.real(0.05, 4)
                : wild && r.oneIn(4) ? pick(r, wildScales)
                : r.oneIn(3)         ? pick(r, almost)
                                     : pick(r, scales);
        for (int i = 0; i < 256; ++i) {
            const OLE_COLOR c = r.oneIn(4) ? 0x80000000u | COLOR_BTNFACE
                                           : r.oneOf<std::uint32_t>({black, white, grey, r.word() & white});
            words()[i] = i && r.oneIn(3) ? words()[i - 1] : c;
            bytes()[i] = static_cast<BYTE>(r.oneIn(3) ? r.oneOf({0, 50, 100, 101, 255}) : r.between(0, 100));
        }
    }
    static int side(Random& r) { return r.oneIn(4) ? r.between(1, 3) : r.between(1, 40); }
    [[nodiscard]] OLE_COLOR* words() const { return static_cast<OLE_COLOR*>(colors.array->pvData); }
    [[nodiscard]] BYTE* bytes() const { return static_cast<BYTE*>(transparencies.array->pvData); }
    // What it covers, up to a pixel for the fractions of an icon's position.
    [[nodiscard]] model::Rect place() const {
        return model::place(x, y, picture.twin.planes[0].width, picture.twin.planes[0].height, scale);
    }
    [[nodiscard]] model::Rect filled(const model::Rect& c) const {
        const model::Rect p = place();
        return {std::max(p.left, c.left), std::max(p.top, c.top), std::min(p.right, c.right),
                std::min(p.bottom, c.bottom)};
    }

    HRESULT draw(ITalRenderEngine2* engine, const model::Rect& c) {
        const model::Rect f = filled(c);
        return what == fill ? engine->Fill(-1, f.left, f.top, f.right, f.bottom, words()[0])
               : what == icon
                   ? engine->DrawIcon8(-3, picture.image->icon(), &colors.array, &transparencies.array, iconX,
                                       iconY, scale, c.left, c.top, c.right, c.bottom)
                   : engine->DrawImage(9, picture.image->image(), x, y, scale, c.left, c.top, c.right,
                                       c.bottom, words()[1]);
    }
    void draw(model::Buffer& buffer, const model::Rect& clip, const model::ColorState& state, int method,
              const model::NearestIndex& nearest) const {
        model::Icon twin{picture.twin.planes[0], {}, {}};
        std::transform(words(), words() + 256, twin.colors.begin(),
                       [](OLE_COLOR ole) { return fromColorRef(translated(ole)); });
        std::copy_n(bytes(), 256, twin.transparency.begin());
        if (what == image) {
            return model::drawImage(buffer, picture.twin, state, x, y, scale, clip, method);
        }
        if (what == icon) {
            return model::drawIcon(buffer, twin, iconX, iconY, scale, clip, nearest);
        }
        const model::Rect f = filled(clip);
        for (int i = 0; i < buffer.width * buffer.height; ++i) {
            const int column = i % buffer.width, row = i / buffer.width;
            if (f.left <= column && column < f.right && f.top <= row && row < f.bottom) {
                buffer.pixels[i] =
                    buffer.format == 8 ? nearest(twin.colors[0]) : model::pack(buffer.format, twin.colors[0]);
            }
        }
    }

    const What what;
    int x, y;
    double iconX, iconY, scale;
    const ImageStore store;
    TwinImage picture;
    TestArray colors{VT_I4, 256}, transparencies{VT_UI1, 256};
};

// What a buffer must hold: random pixels that are there already, until the model draws over them.
class BufferTwin {
public:
    BufferTwin(const EngineView& view, Random& random) : view_(view) {
        view_.withPixels([&](const Pixels& p) {
            buffer = {p.format, p.width, p.height, {}};
            for (int y = 0; y < p.height; ++y) {
                random.fill(p.at(0, y), p.width * p.bytes);
                for (int x = 0; x < p.width; ++x) {
                    buffer.pixels.push_back(p.value(x, y));
                }
            }
            memory_.assign(p.data, p.data + p.height * p.stride);
        });
    }

    model::Buffer buffer;

    // Whether it does, the bytes between its rows included. allowed: how much a channel may differ, in which
    // case the model goes on with the pixels as they are and the unused byte is not looked at.
    [[nodiscard]] testing::AssertionResult holds(std::optional<int> allowed = {}) {
        auto result = testing::AssertionSuccess();
        view_.withPixels([&](const Pixels& p) {
            for (int i = 0; i < buffer.width * buffer.height; ++i) {
                const int x = i % buffer.width, y = i / buffer.width;
                const std::uint32_t is = p.value(x, y), expected = buffer.pixels[i];
                const auto differs = [&](int shift) {
                    return std::abs(int(is >> shift & 255) - int(expected >> shift & 255)) > *allowed;
                };
                if (result && is != expected && (!allowed || differs(0) || differs(8) || differs(16))) {
                    result = testing::AssertionFailure() << "pixel (" << x << ", " << y << ") is " << std::hex
                                                         << is << " instead of " << expected;
                }
                buffer.pixels[i] = is;
                std::memcpy(&memory_[p.at(x, y) - p.data], &is, p.bytes);
            }
            if (result && std::memcmp(memory_.data(), p.data, memory_.size()) != 0) {
                result = testing::AssertionFailure() << "the padding of the rows was written";
            }
        });
        return result;
    }

private:
    const EngineView& view_;
    std::vector<std::uint8_t> memory_;
};

// An initialized engine of either kind on a screen of every format.
struct ImageTest : testing::TestWithParam<std::tuple<bool, int>>, EngineView {
    ImageTest() : EngineView(std::get<0>(GetParam()), std::get<1>(GetParam())) { initialize(engine.Get()); }

    HRESULT draw(ITalImage* image, double scale = 1) const {
        return engine->DrawImage(0, image, 0, 0, scale, least, least, most, most, 0);
    }
    // An icon of opaque black.
    HRESULT drawIcon(TestImage& icon, double scale = 1) const {
        TestArray colors(VT_I4, 256), transparencies(VT_UI1, 256);
        return engine->DrawIcon8(0, icon.icon(), &colors.array, &transparencies.array, 0, 0, scale, least,
                                 least, most, most);
    }
    // A failure told by the name of its method, by another text, or by the component's own.
    void expectFailure(HRESULT expected, HRESULT hr, const std::wstring& text = L"DrawImage") const {
        expectError(expected,
                    expected == noPixelData ? L"Unable to retrieve pixel data from TalImage object." : text,
                    hr, directDraw ? L"Hemlar.TalRenderEngine.1" : L"Hemlar.TalGDIRenderEngine.1");
    }

    const ImageStore store;
};

} // namespace talx::test
