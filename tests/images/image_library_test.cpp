// The image classes of talxstd.dll: their memory, their accesses, and what they say when they fail. That the
// engine draws them is shown by every scaled image.
#include "tests/support/error_info.h"
#include "tests/support/stack_object.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <thread>

namespace talx::test {
namespace {

using Access = ComPtr<ITalPelAccess>;
using Target = std::pair<std::uint8_t*, long>; // data and row stride

Target target(const Access& access, HRESULT expected = S_OK) {
    __int64 data = 1;
    long stride = 1;
    EXPECT_TRUE(access->get_Data(&data) == expected && access->get_RowStride(&stride) == expected);
    return {reinterpret_cast<std::uint8_t*>(data), stride};
}

struct ImageClass {
    CLSID clsid;
    IID kind;
    std::wstring name;
    long fewest, planes, bytes; // of a pel of plane 0
};

struct ImageLibrary : testing::TestWithParam<ImageClass> {
    HRESULT wrap(long n, long w, long h, const void* data, long stride, IUnknown* alive = nullptr) const {
        return memory->Wrap(n, w, h, reinterpret_cast<__int64>(data), stride, alive);
    }
    HRESULT open(long n, ITalPelAccess** result, int mode = talPelAccessRead) const {
        return memory->CreatePlaneAccess(n, static_cast<TalPelAccessMode>(mode), result);
    }
    // Of the image, or of a colour image's last plane. A range image has none.
    HRESULT part(ITalPelAccess** result, long l, long t, long w, long h) const {
        return source16 ? source16->CreatePelAccess(talPelAccessRead, l, t, w, h, result)
                        : source->CreatePelAccess(talPelAccessRead, l, t, w, h, result);
    }
    void expectSize(long width, long height) const {
        long w = -1, h = -1;
        EXPECT_TRUE(image->get_Width(&w) == S_OK && image->get_Height(&h) == S_OK && w == width &&
                    h == height);
    }

    const ImageClass& row = GetParam();
    const ComPtr<ITalImageMemory> memory = createObject<ITalImageMemory>(imageModule(), row.clsid);
    ComPtr<ITalImage> image;
    ComPtr<ITalImageColor> color;
    ComPtr<ITalImage16Range> range;
    ComPtr<IUnknown> plane;
    ComPtr<ITalPelAccessSource> source;
    ComPtr<ITalPelAccessSource16> source16;
    void SetUp() override {
        ASSERT_EQ(S_OK, memory->QueryInterface(row.kind, &image));
        const bool planes = memory.As(&color) == S_OK && color->GetPlane(2, &plane) == S_OK;
        ASSERT_TRUE(planes || memory.As(&plane) == S_OK);
        ASSERT_EQ(1,
                  (plane.As(&source) == S_OK) + (memory.As(&source16) == S_OK) + (memory.As(&range) == S_OK));
    }
};
INSTANTIATE_TEST_SUITE_P(
    Classes, ImageLibrary,
    testing::Values(
        ImageClass{__uuidof(TalImage8Grey), __uuidof(ITalImage8Grey), L"TalImage8Grey", 1, 1, 1},
        ImageClass{__uuidof(TalImageColor), __uuidof(ITalImageColor), L"TalImageColor", 3, 3, 1},
        ImageClass{__uuidof(TalImage16Grey), __uuidof(ITalImage16Grey), L"TalImage16Grey", 1, 1, 2},
        ImageClass{__uuidof(TalImage16Range), __uuidof(ITalImage16Range), L"TalImage16Range", 1, 2, 2}));

TEST_P(ImageLibrary, SaysWhichArgumentIsWrong) {
    Access access;
    IID face = __uuidof(ITalImageMemory);
    const auto fails = [&](HRESULT expected, const wchar_t* argument, HRESULT actual) {
        const ErrorInfo info = takeErrorInfo();
        EXPECT_TRUE(actual == expected && info.interfaceId == face && !access) << std::hex << actual;
        EXPECT_EQ(L"Hemlar." + row.name + L".1", info.source);
        EXPECT_NE(info.description.npos, info.description.find(argument)) << info.description;
    };
    fails(E_FAIL, L"no memory", open(0, &access));
    EXPECT_EQ(S_OK, memory->Allocate(9, 7, row.planes));
    for (const auto& [w, h] : {std::pair(0L, 7L), {9, 0}, {-1, 7}, {9, -1}}) {
        fails(E_INVALIDARG, L"Width and Height must be at least 1", memory->Allocate(w, h, row.planes));
        fails(E_INVALIDARG, L"Width and Height must be at least 1", wrap(0, w, h, this, 90));
    }
    for (const long n : {-1L, row.planes}) {
        fails(E_INVALIDARG, L"Planes", memory->Allocate(9, 7, n < 0 ? row.fewest - 1 : n + 1));
        fails(E_INVALIDARG, L"Plane is not", wrap(n, 9, 7, this, 90));
        fails(E_INVALIDARG, L"Plane is not", open(n, &access));
        fails(E_INVALIDARG, L"Mode", open(0, &access, n < 0 ? 0 : 4));
        fails(E_INVALIDARG, L"RowStride", wrap(0, 9, 7, this, n < 0 ? 1 - 9 * row.bytes : 9 * row.bytes - 1));
        if (row.planes > 1) {
            fails(E_INVALIDARG, L"those of plane 0",
                  n < 0 ? wrap(1, 8, 7, this, 90) : wrap(1, 9, 8, this, 90));
        }
    }
    fails(E_OUTOFMEMORY, L"RowStride", memory->Allocate(LONG_MAX, 1, row.planes));
    fails(E_OUTOFMEMORY, L"Width x Height", memory->Allocate(LONG_MAX / 4, LONG_MAX, row.planes));
    fails(E_POINTER, L"Data", wrap(0, 9, 7, nullptr, 90));
    fails(E_POINTER, L"ppAccess", open(0, nullptr));
    face = row.kind;
    fails(E_POINTER, L"result", image->get_Width(nullptr));
    fails(E_POINTER, L"result", image->get_Height(nullptr));
    if (color) {
        IUnknown* none = nullptr;
        fails(E_POINTER, L"result", color->GetPlane(0, nullptr));
        fails(E_INVALIDARG, L"Plane", color->GetPlane(-1, &none));
        fails(E_INVALIDARG, L"Plane", color->GetPlane(3, &none));
    } else if (range) {
        fails(E_POINTER, L"ppValues", range->CreatePelAccesses(nullptr, &access));
        fails(E_POINTER, L"ppMask", range->CreatePelAccesses(&access, nullptr));
    }
    face = source ? __uuidof(ITalPelAccessSource) : __uuidof(ITalPelAccessSource16);
    for (const auto& [l, t, w, h] : {std::tuple(-1, 0, 9, 7),
                                     {0, -1, 9, 7},
                                     {1, 0, 9, 7},
                                     {0, 1, 9, 7},
                                     {0, 0, 0, 7},
                                     {0, 0, 9, 0},
                                     {INT_MAX, INT_MAX, INT_MAX, INT_MAX}}) {
        range ? void() : fails(E_INVALIDARG, L"Left, Top, Width and Height", part(&access, l, t, w, h));
    }
    range ? void() : fails(E_POINTER, L"ppAccess", part(nullptr, 0, 0, 9, 7));
    expectSize(9, 7); // as it was

    Access ended;
    EXPECT_EQ(S_OK, open(0, &ended));
    face = __uuidof(ITalPelAccess);
    fails(E_POINTER, L"result", ended->get_Data(nullptr));
    fails(E_POINTER, L"result", ended->get_RowStride(nullptr));
    EXPECT_EQ(S_OK, ended->Unlock());
    fails(E_UNEXPECTED, L"unlocked already", ended->Unlock());
    EXPECT_EQ(Target(nullptr, 0), target(ended, E_UNEXPECTED));
    ComPtr<ISupportErrorInfo> supports[3];
    EXPECT_TRUE(image.As(&supports[0]) == S_OK && plane.As(&supports[1]) == S_OK &&
                ended.As(&supports[2]) == S_OK);
}

TEST_P(ImageLibrary, AllocatesZeroedMemory) {
    Access access;
    for (const long rows : {8, 7}) { // freed memory may come again
        EXPECT_EQ(S_OK, memory->Allocate(1300, rows, row.planes));
        for (long n = row.planes - 1; n >= 0; --n) {
            EXPECT_EQ(S_OK, open(n, access.ReleaseAndGetAddressOf(), talPelAccessReadWrite));
            const auto [data, stride] = target(access);
            EXPECT_LE(1300 * (n ? 1 : row.bytes), stride);
            EXPECT_EQ(rows * stride, std::count(data, data + rows * stride, 0));
            std::fill_n(data, rows * stride, 255);
        }
    }
    EXPECT_EQ(S_OK, memory->Allocate(1, 1, row.fewest));
    std::fill_n(target(access).first, 7 * target(access).second, 1); // lives as long as the access
}

TEST_P(ImageLibrary, WrapsMemoryForAsLongAsItIsNeeded) {
    StackObject<IUnknown> keep, other;
    std::uint8_t own[3][200]{};
    Access access, held;
    expectSize(0, 0);
    for (long n = 0; n < row.planes; ++n) { // the last row first
        EXPECT_EQ(S_OK, wrap(n, 9, 9, own[n] + 161, -20, &keep));
        EXPECT_EQ(S_OK, open(n, access.ReleaseAndGetAddressOf()));
        EXPECT_EQ(Target(own[n] + 161, -20), target(access));
    }
    expectSize(9, 9);
    EXPECT_EQ(S_OK, range ? range->CreatePelAccesses(&held, &access) : part(&access, 3, 2, 6, 7));
    EXPECT_EQ(Target(own[row.planes - 1] + 161 - (range ? 0 : 40 - 3 * row.bytes), -20), target(access));
    EXPECT_EQ(S_OK, range ? range->CreatePelAccesses(&held, &access) : part(&held, 0, 0, 0, 0));
    EXPECT_EQ(Target(own[range ? 0 : row.planes - 1] + 161, -20), target(held));
    EXPECT_TRUE(row.planes == 1 || wrap(1, 9, 9, own[1], 40, &other) == S_OK);
    EXPECT_EQ(S_OK, wrap(0, 1, 1, own[0], 0)) << "a single row needs no distance to the next";
    EXPECT_EQ(0, other.references) << "the other planes are dropped";
    expectSize(1, 1);
    access.Reset();
    EXPECT_LT(0, keep.references) << "the access needs the memory";
    held.Reset();
    EXPECT_EQ(0, keep.references);
    EXPECT_EQ(S_OK, wrap(0, 9, 9, own[0], 40, &keep));
    EXPECT_EQ(S_OK, memory->Allocate(2, 2, row.fewest));
    EXPECT_EQ(0, keep.references);
}

// One thread gives the image other memory while two look at it: what these see belongs together.
TEST_P(ImageLibrary, ServesThreadsAtOnce) {
    StackObject<IUnknown> keep;
    std::uint8_t own[64]{};
    EXPECT_EQ(S_OK, memory->Allocate(100, 2, row.fewest));
    std::atomic<int> looking = 2;
    const auto look = [&] {
        for (long width = 0, i = 0; i < 5000; ++i) {
            Access access;
            EXPECT_EQ(S_OK, open(0, &access));
            EXPECT_EQ(target(access).first == own ? 8 : 96 * row.bytes + 16, target(access).second);
            EXPECT_TRUE(image->get_Width(&width) == S_OK && (width == 3 || width == 100));
        }
        --looking;
    };
    std::thread first(look), second(look);
    for (int i = 0; looking; ++i) {
        EXPECT_EQ(S_OK, i % 2 ? memory->Allocate(100, 2, row.fewest) : wrap(0, 3, 2, own, 8, &keep));
    }
    first.join();
    second.join();
    EXPECT_EQ(S_OK, memory->Allocate(1, 1, row.fewest));
    EXPECT_EQ(0, keep.references);
}

} // namespace
} // namespace talx::test
