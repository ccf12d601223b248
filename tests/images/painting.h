// Drawing with a real engine and with the model at once: images and arrays for the engine, and what its
// composition bitmap must hold afterwards.
#pragma once

#include "tests/gdi/gdi_view.h"
#include "tests/model/model.h"
#include "tests/pixels/random_rows.h"
#include "tests/support/test_image.h"

#include <limits>
#include <optional>

namespace talx::test {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr model::Rect everywhere{least, least, most, most};
constexpr HRESULT noPixelData = static_cast<HRESULT>(0x80044010);
constexpr HRESULT ownFailure = HRESULT_FROM_WIN32(ERROR_BUSY); // of an image that a test makes fail

inline int seed() {
    return testing::UnitTest::GetInstance()->random_seed();
}

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

// What the composition bitmap must hold: random pixels that are there already, until the model draws over
// them.
class BufferTwin {
public:
    BufferTwin(const GdiView& view, Random& random)
        : bits_(view.bits()),
          memory_(static_cast<std::size_t>(bits_.height()) * bits_.section().dsBm.bmWidthBytes) {
        random.fill(bits_.row(0), memory_.size());
        memory_.assign(bits_.row(0), bits_.row(0) + memory_.size());
        buffer = {formatOf(bits_.section()), bits_.width(), bits_.height(), {}};
        for (int i = 0; i < buffer.width * buffer.height; ++i) {
            buffer.pixels.push_back(bits_.pixel(i % buffer.width, i / buffer.width));
        }
    }

    model::Buffer buffer;

    // Whether it does, the bytes between its rows included.
    [[nodiscard]] testing::AssertionResult holds() {
        const int bytes = bits_.bitsPerPixel() / 8;
        for (int i = 0; i < buffer.width * buffer.height; ++i) {
            const int x = i % buffer.width, y = i / buffer.width;
            if (buffer.pixels[i] != bits_.pixel(x, y)) {
                return testing::AssertionFailure() << "pixel (" << x << ", " << y << ") is " << std::hex
                                                   << bits_.pixel(x, y) << " instead of " << buffer.pixels[i];
            }
            std::memcpy(&memory_[bits_.row(y) - bits_.row(0) + x * bytes], &buffer.pixels[i], bytes);
        }
        return testing::AssertionResult(std::memcmp(memory_.data(), bits_.row(0), memory_.size()) == 0)
               << "the padding of the rows was written";
    }

private:
    const BitmapBits bits_;
    std::vector<std::uint8_t> memory_;
};

// An initialized engine on a screen of every format.
struct ImageTest : testing::TestWithParam<int>, GdiView {
    ImageTest() : GdiView(GetParam()) {
        EXPECT_EQ(S_OK, initialize());
        EXPECT_EQ(S_OK, engine.As(&scaling));
    }
    [[nodiscard]] std::uint8_t nearestIndex(COLORREF color) const {
        return static_cast<std::uint8_t>(GetNearestPaletteIndex(palette(), color));
    }
    HRESULT draw(ITalImage* image, double scale = 1) const {
        return engine->DrawImage(0, image, 0, 0, scale, least, least, most, most, 0);
    }
    // An icon of random colours, all opaque.
    HRESULT drawIcon(TwinImage& icon, double scale = 1) const {
        TestArray colors(VT_I4, 256), transparency(VT_UI1, 256);
        Random(0).fill(colors.array->pvData, 1024);
        for (int i = 0; i < 256; ++i) {
            static_cast<OLE_COLOR*>(colors.array->pvData)[i] &= white;
        }
        return engine->DrawIcon8(0, icon.image->icon(), &colors.array, &transparency.array, 0, 0, scale,
                                 least, least, most, most);
    }
    void setMethod(int method) const {
        scaling->put_ScalingMethod(static_cast<TalRenderEngineScalingMethodConstants>(method));
    }
    // A failed drawing, by the name of its method or the component's own text.
    static void expectFailure(HRESULT expected, HRESULT hr, const wchar_t* method = L"DrawImage") {
        expectError(expected,
                    expected == noPixelData ? L"Unable to retrieve pixel data from TalImage object." : method,
                    hr);
    }

    ComPtr<ITalRenderEngineScalingParams> scaling;
    const ImageStore store;
};

} // namespace talx::test
