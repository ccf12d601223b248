// The image classes of talxstd.dll: their memory, their accesses, and the engine drawing them.
#include "tests/images/painting.h"

namespace talx::test {
namespace {

using Kind = model::Kind;

const CLSID classes[] = {__uuidof(TalImage8Grey), __uuidof(TalImageColor), __uuidof(TalImage16Grey),
                         __uuidof(TalImage16Range)};

// Counts the references to an owner's memory. Lives on the test's stack.
struct KeepAlive final : IUnknown {
    ~KeepAlive() { EXPECT_EQ(0, references); }
    long references = 0;
    STDMETHOD(QueryInterface)(REFIID, void** object) override { return *object = nullptr, E_NOINTERFACE; }
    STDMETHOD_(ULONG, AddRef)() override { return ++references; }
    STDMETHOD_(ULONG, Release)() override { return --references; }
};

// A read, write or other access, unlocked at the end of its scope.
struct Access {
    Access(ITalImageMemory* memory, long plane, int mode = talPelAccessReadWrite) {
        __int64 address = 0;
        EXPECT_EQ(S_OK, memory->CreatePlaneAccess(plane, static_cast<TalPelAccessMode>(mode), &access));
        EXPECT_EQ(S_OK, access->get_Data(&address));
        EXPECT_EQ(S_OK, access->get_RowStride(&stride));
        data = reinterpret_cast<std::uint8_t*>(address);
    }
    ~Access() { EXPECT_EQ(S_OK, access->Unlock()); }

    ComPtr<ITalPelAccess> access;
    std::uint8_t* data;
    long stride = 0;
};

struct ImageLibrary : testing::TestWithParam<int> {
    const Kind kind = static_cast<Kind>(GetParam());
    const ComPtr<ITalImageMemory> memory = createObject<ITalImageMemory>(imageModule(), classes[GetParam()]);
    const long planes = kind == Kind::color     ? 3
                        : kind == Kind::range16 ? 2
                                                : 1,
               fewest = planes == 2 ? 1 : planes;
    const int bytes = kind == Kind::grey16 || kind == Kind::range16 ? 2 : 1; // per pixel of the first plane

    std::pair<long, long> size() const {
        ComPtr<ITalImage> image;
        std::pair<long, long> result{-1, -1};
        EXPECT_EQ(S_OK, memory.As(&image));
        EXPECT_EQ(S_OK, image->get_Width(&result.first));
        EXPECT_EQ(S_OK, image->get_Height(&result.second));
        return result;
    }
    HRESULT wrap(long plane, long w, long h, const void* data, long stride, IUnknown* alive = nullptr) const {
        return memory->Wrap(plane, w, h, reinterpret_cast<__int64>(data), stride, alive);
    }
};
INSTANTIATE_TEST_SUITE_P(Classes, ImageLibrary, testing::Values(0, 1, 2, 3));

TEST_P(ImageLibrary, AllocatesZeroedMemory) {
    ITalPelAccess* none = reinterpret_cast<ITalPelAccess*>(1);
    EXPECT_EQ(E_FAIL, memory->CreatePlaneAccess(0, talPelAccessRead, &none)) << "no memory yet";
    EXPECT_EQ(nullptr, none);
    for (const int round : {0, 1}) { // freed memory may come again
        EXPECT_EQ(S_OK, memory->Allocate(1300, 7 + round, planes));
        for (long plane = 0; plane < planes; ++plane) {
            const Access a(memory.Get(), plane);
            const int row = 1300 * (plane ? 1 : bytes);
            EXPECT_GE(a.stride, row);
            for (int y = 0; y < 7 + round; ++y) {
                EXPECT_EQ(0, std::count_if(a.data + y * a.stride, a.data + y * a.stride + row,
                                           [](auto b) { return b; }));
            }
            std::memset(a.data, 255, 7 * a.stride);
        }
    }
    for (const auto& [w, h, n] : {std::tuple{0L, 7L, planes},
                                  {13, 0, planes},
                                  {-1, 7, planes},
                                  {13, least, planes},
                                  {13, 7, 0},
                                  {13, 7, planes + 1},
                                  {13, 7, -1},
                                  {13, 7, fewest - 1}}) {
        EXPECT_EQ(E_INVALIDARG, memory->Allocate(w, h, n));
    }
    EXPECT_EQ(E_OUTOFMEMORY, memory->Allocate(most, most, planes));
    EXPECT_EQ(std::pair(1300L, 8L), size()) << "as it was";
    const Access old(memory.Get(), 0);
    EXPECT_EQ(S_OK, memory->Allocate(1, 1, fewest));
    std::memset(old.data, 1, 8 * old.stride); // lives as long as the access

    for (const auto& [plane, mode] : {std::pair{-1L, 1}, {planes, 1}, {0L, 0}, {0L, 4}, {0L, -1}}) {
        none = reinterpret_cast<ITalPelAccess*>(1);
        EXPECT_EQ(E_INVALIDARG, memory->CreatePlaneAccess(plane, static_cast<TalPelAccessMode>(mode), &none));
        EXPECT_EQ(nullptr, none);
    }
    EXPECT_EQ(E_POINTER, memory->CreatePlaneAccess(0, talPelAccessRead, nullptr));
}

TEST_P(ImageLibrary, WrapsMemoryForAsLongAsItIsNeeded) {
    KeepAlive keep, other;
    std::uint8_t own[4][400]{};
    EXPECT_EQ(std::pair(0L, 0L), size());
    EXPECT_EQ(E_POINTER, wrap(0, 9, 9, nullptr, 40, &keep));
    for (const auto& [plane, w, h, stride] : {std::tuple{-1L, 9L, 9L, 40L},
                                              {planes, 9, 9, 40},
                                              {0, 0, 9, 40},
                                              {0, 9, -1, 40},
                                              {0, 9, 9, 0},
                                              {0, 9, 9, 8},
                                              {0, 9, 9, -8}}) {
        EXPECT_EQ(E_INVALIDARG, wrap(plane, w, h, own[0], stride, &keep));
    }
    EXPECT_EQ(0, keep.references);
    for (long plane = 0; plane < planes; ++plane) { // the last row first
        EXPECT_EQ(S_OK, wrap(plane, 9, 9, own[plane] + 8 * 21 + 1, -21, &keep));
        const Access a(memory.Get(), plane);
        EXPECT_EQ(own[plane] + 8 * 21 + 1, a.data);
        EXPECT_EQ(-21, a.stride);
    }
    EXPECT_EQ(std::pair(9L, 9L), size());
    EXPECT_LE(planes, keep.references);
    if (planes > 1) {
        EXPECT_EQ(E_INVALIDARG, wrap(1, 8, 9, own[1], 40)) << "every plane has the size of the first";
        EXPECT_EQ(E_INVALIDARG, wrap(1, 9, 8, own[1], 40));
        EXPECT_EQ(S_OK, wrap(1, 9, 9, own[1], 40, &other));
        EXPECT_LT(0, other.references);
    }
    {
        const Access held(memory.Get(), 0);
        EXPECT_EQ(S_OK, wrap(0, 1, 1, own[3], 0)) << "a single row needs no distance to the next";
        EXPECT_EQ(0, other.references) << "the other planes are dropped";
        EXPECT_EQ(std::pair(1L, 1L), size());
        EXPECT_LT(0, keep.references) << "the access needs the memory";
    }
    EXPECT_EQ(0, keep.references);
    EXPECT_EQ(S_OK, wrap(0, 9, 9, own[0], 40, &keep));
    ComPtr<ITalPelAccess> twice;
    EXPECT_EQ(S_OK, memory->CreatePlaneAccess(0, talPelAccessRead, &twice));
    EXPECT_EQ(S_OK, twice->Unlock());
    EXPECT_TRUE(FAILED(twice->Unlock()));
    twice.Reset();
    EXPECT_EQ(S_OK, memory->Allocate(2, 2, fewest));
    EXPECT_EQ(0, keep.references);
}

struct ImageLibraryDrawn : ImageLibrary, GdiView {
    ImageLibraryDrawn() : GdiView(32) { EXPECT_EQ(S_OK, initialize()); }
};
INSTANTIATE_TEST_SUITE_P(Classes, ImageLibraryDrawn, testing::Values(0, 1, 2, 3));

// Allocated or wrapped, at scale 1 and scaled.
TEST_P(ImageLibraryDrawn, ShowsWhatTheModelShows) {
    const ImageStore store;
    model::ColorState colors;
    colors.maskEnabled = true;
    EXPECT_EQ(S_OK, engine->put_VisiblePixelMaskEnable(VARIANT_TRUE));
    for (unsigned number = 0; number < 40; ++number) {
        Random random(number);
        const int w = random.between(1, 30), h = random.between(1, 30), depth = random.between(0, 5);
        const double scale = random.oneIn(2) ? 1 : random.real(0.3, 3);
        TwinImage picture(random, store, kind, w, h, number % 4 < 2, depth);
        const long count = static_cast<long>(picture.planes.size());
        EXPECT_TRUE(number % 2 || memory->Allocate(w, h, count) == S_OK);
        for (long plane = 0; plane < count; ++plane) {
            const auto& [data, stride] = picture.planes[plane];
            if (number % 2) {
                EXPECT_EQ(S_OK, wrap(plane, w, h, data, stride));
                continue;
            }
            const Access a(memory.Get(), plane, talPelAccessWrite);
            for (int y = 0; y < h; ++y) {
                const auto* row = static_cast<const std::uint8_t*>(data) + y * stride;
                std::copy_n(row, w * (plane ? 1 : bytes), a.data + y * a.stride);
            }
        }
        ComPtr<ITalImage> image;
        ComPtr<ITalImage16Grey> grey16;
        EXPECT_EQ(S_OK, memory.As(&image));
        EXPECT_TRUE(FAILED(memory.As(&grey16)) || grey16->put_DepthCode(depth) == S_OK);
        BufferTwin twin(*this, random);
        model::drawImage(twin.buffer, picture.twin, colors, 3, -2, scale, everywhere, 0);
        EXPECT_EQ(S_OK, engine->DrawImage(0, image.Get(), 3, -2, scale, least, least, most, most, 0));
        ASSERT_TRUE(twin.holds()) << "case " << number;
    }
}

} // namespace
} // namespace talx::test
