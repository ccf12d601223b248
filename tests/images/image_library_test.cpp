// The image classes of talxstd.dll: their memory, their accesses, and what they say when they fail. That the
// engine draws them is shown by every scaled image.
#include "tests/support/error_info.h"
#include "tests/support/import_hook.h"
#include "tests/support/stack_object.h"

#include <algorithm>
#include <climits>
#include <thread>

namespace talx::test {
namespace {

constexpr TalPelAccessMode reading = talPelAccessRead;
using Access = ComPtr<ITalPelAccess>;
using Target = std::pair<std::uint8_t*, long>; // data and row stride

Target target(const Access& access, HRESULT expected = S_OK) {
    __int64 data = 1;
    long stride = 1;
    EXPECT_TRUE(access->get_Data(&data) == expected && access->get_RowStride(&stride) == expected);
    return {reinterpret_cast<std::uint8_t*>(data), stride};
}

struct TestedImage {
    explicit TestedImage(const CLSID& clsid) : memory(createObject<ITalImageMemory>(imageModule(), clsid)) {}
    template <class Interface>
    [[nodiscard]] ComPtr<Interface> as() const {
        ComPtr<Interface> face;
        EXPECT_EQ(S_OK, memory.As(&face));
        return face;
    }
    HRESULT wrap(long n, long w, long h, const void* data, long stride, IUnknown* alive = nullptr) const {
        return memory->Wrap(n, w, h, reinterpret_cast<__int64>(data), stride, alive);
    }
    [[nodiscard]] Target open(long n) const {
        Access access;
        EXPECT_EQ(S_OK, memory->CreatePlaneAccess(n, talPelAccessReadWrite, &access));
        return target(access);
    }
    [[nodiscard]] std::pair<long, long> size() const {
        long width = -1, height = -1;
        EXPECT_EQ(S_OK, as<ITalImage>()->get_Width(&width) | as<ITalImage>()->get_Height(&height));
        return {width, height};
    }
    const ComPtr<ITalImageMemory> memory;
};

TEST(ImageServer, SaysWhichArgumentIsWrong) {
    const TestedImage image(__uuidof(TalImageColor)), range(__uuidof(TalImage16Range));
    ITalImageMemory* const memory = image.memory.Get();
    const auto color = image.as<ITalImageColor>();
    const auto accesses = range.as<ITalImage16Range>();
    ComPtr<IUnknown> plane;
    ComPtr<ITalPelAccessSource> source;
    Access access, none;
    IID face = __uuidof(ITalImageMemory);
    std::wstring progId = L"Hemlar.TalImageColor.1";
    const auto fails = [&](HRESULT expected, const wchar_t* text, HRESULT actual) {
        const ErrorInfo info = takeErrorInfo();
        EXPECT_TRUE(actual == expected && info.interfaceId == face && info.source == progId && !none &&
                    info.description.find(text) != info.description.npos)
            << std::hex << actual << info.source << info.description;
    };
    fails(E_FAIL, L"no memory", memory->CreatePlaneAccess(0, reading, &none));
    EXPECT_EQ(S_OK, memory->Allocate(9, 7, 3));
    for (const auto& [w, h] : {std::pair(0, 7), {9, 0}, {-1, 7}, {9, -1}}) {
        fails(E_INVALIDARG, L"at least 1", memory->Allocate(w, h, 3));
        fails(E_INVALIDARG, L"at least 1", image.wrap(0, w, h, this, 90));
    }
    for (const bool above : {false, true}) {
        const long n = above ? 3 : -1;
        const auto mode = static_cast<TalPelAccessMode>(above ? 4 : 0);
        fails(E_INVALIDARG, L"Plane is not", image.wrap(n, 9, 7, this, 90));
        fails(E_INVALIDARG, L"Plane is not", memory->CreatePlaneAccess(n, reading, &none));
        fails(E_INVALIDARG, L"Mode", memory->CreatePlaneAccess(0, mode, &none));
        fails(E_INVALIDARG, L"RowStride", image.wrap(0, 9, 7, this, above ? 8 : -8));
        fails(E_INVALIDARG, L"those of plane 0", image.wrap(1, 8 + above, 7 + above, this, 90));
    }
    fails(E_OUTOFMEMORY, L"RowStride", memory->Allocate(LONG_MAX, 1, 3));
    fails(E_POINTER, L"Data", image.wrap(0, 9, 7, nullptr, 90));
    fails(E_POINTER, L"ppAccess", memory->CreatePlaneAccess(0, reading, nullptr));

    face = __uuidof(ITalImageColor);
    fails(E_POINTER, L"result", color->get_Width(nullptr));
    fails(E_POINTER, L"result", color->GetPlane(0, nullptr));
    fails(E_INVALIDARG, L"Plane", color->GetPlane(-1, &plane));
    fails(E_INVALIDARG, L"Plane", color->GetPlane(3, &plane));

    face = __uuidof(ITalPelAccessSource);
    EXPECT_TRUE(color->GetPlane(2, &plane) == S_OK && plane.As(&source) == S_OK);
    fails(E_POINTER, L"ppAccess", source->CreatePelAccess(reading, 0, 0, 0, 0, nullptr));
    fails(E_INVALIDARG, L"Left, Top", source->CreatePelAccess(reading, 1, 0, 9, 7, &none));

    face = __uuidof(ITalPelAccess);
    EXPECT_EQ(S_OK, source->CreatePelAccess(reading, 1, 0, 8, 7, &access)) << "as it was";
    fails(E_POINTER, L"result", access->get_Data(nullptr));
    EXPECT_EQ(S_OK, access->Unlock());
    fails(E_UNEXPECTED, L"unlocked already", access->Unlock());
    EXPECT_EQ(Target(nullptr, 0), target(access, E_UNEXPECTED));

    face = __uuidof(ITalImage16Range);
    progId = L"Hemlar.TalImage16Range.1";
    fails(E_POINTER, L"ppValues", accesses->CreatePelAccesses(nullptr, &none));
    fails(E_POINTER, L"ppMask", accesses->CreatePelAccesses(&none, nullptr));
    fails(E_INVALIDARG, L"the same", accesses->CreatePelAccesses(&none, &none));
    ComPtr<ISupportErrorInfo> support[3];
    EXPECT_EQ(S_OK, color.As(&support[0]) | plane.As(&support[1]) | access.As(&support[2]));
}

TEST(ImageServer, AllocatesZeroedMemoryForThePlanesOfTheKind) {
    for (const auto& [clsid, fewest, planes, bytes] : {std::tuple(__uuidof(TalImage8Grey), 1, 1, 1),
                                                       {__uuidof(TalImageColor), 3, 3, 1},
                                                       {__uuidof(TalImage16Grey), 1, 1, 2},
                                                       {__uuidof(TalImage16Range), 1, 2, 2}}) {
        const TestedImage image(clsid);
        for (long n = -1; n < 5; ++n) { // freed memory may come again
            const bool possible = n >= fewest && n <= planes;
            EXPECT_EQ(possible ? S_OK : E_INVALIDARG, image.memory->Allocate(1300, 7, n));
            for (long i = 0; possible && i < n; ++i) {
                const auto [data, stride] = image.open(i);
                EXPECT_LE(1300 * (i ? 1 : bytes), stride);
                EXPECT_EQ(7 * stride, std::count(data, data + 7 * stride, 0));
                std::fill_n(data, 7 * stride, 255);
            }
        }
    }
}

TEST(ImageServer, KeepsWrappedMemoryForAsLongAsItIsNeeded) {
    StackObject<IUnknown> keep, other;
    const TestedImage image(__uuidof(TalImage16Range));
    std::uint8_t own[2][200]{};
    Access values, mask;
    EXPECT_EQ(std::pair(0L, 0L), image.size());
    EXPECT_EQ(S_OK, image.wrap(0, 9, 9, own[0] + 161, -20, &keep)); // the last row first
    EXPECT_EQ(S_OK, image.as<ITalImage16Range>()->CreatePelAccesses(&values, &mask));
    EXPECT_EQ(nullptr, mask.Get());
    EXPECT_EQ(S_OK, image.wrap(1, 9, 9, own[1], 10, &other));
    {
        int locks = 0;
        const ImportHook<HOOK(AcquireSRWLockExclusive)> enter(
            imageModule(), [&](SRWLOCK* lock) { ++locks, enter.original(lock); });
        EXPECT_EQ(S_OK, image.as<ITalImage16Range>()->CreatePelAccesses(&values, &mask));
        EXPECT_EQ(1, locks) << "both of one moment";
    }
    EXPECT_TRUE(target(values) == Target(own[0] + 161, -20) && target(mask) == Target(own[1], 10));
    EXPECT_EQ(std::pair(9L, 9L), image.size());
    mask.Reset();
    EXPECT_EQ(S_OK, image.wrap(0, 1, 1, own[0], 0)) << "a single row needs no distance to the next";
    EXPECT_EQ(0, other.references) << "the other planes are dropped";
    EXPECT_LT(0, keep.references) << "the access needs the memory";
    values.Reset();
    EXPECT_EQ(0, keep.references);
}

TEST(ImageServer, GivesAccessToAnyPart) {
    std::uint8_t own[100]{};
    const TestedImage grey(__uuidof(TalImage16Grey));
    EXPECT_EQ(S_OK, grey.wrap(0, 2, 3, own + 60, -20));
    const auto source = grey.as<ITalPelAccessSource16>();
    long depth = -1;
    EXPECT_TRUE(grey.as<ITalImage16Grey>()->get_DepthCode(&depth) == S_OK && depth == talDepth16);
    Access part;
    for (int i = 0; i < 7 * 7 * 7 * 7; ++i) { // all parts, and what is none, around two columns of three rows
        const long v[] = {-1, 0, 1, 2, 3, 4, LONG_MAX};
        const long l = v[i % 7], t = v[i / 7 % 7], w = v[i / 49 % 7], h = v[i / 343];
        const bool inside = l >= 0 && t >= 0 && w > 0 && h > 0 && w <= 2 - l && h <= 3 - t;
        const HRESULT expected = inside || !(l | t | w | h) ? S_OK : E_INVALIDARG;
        ASSERT_EQ(expected, source->CreatePelAccess(reading, l, t, w, h, &part));
        ASSERT_TRUE(!part || target(part) == Target(own + 60 - 20 * t + 2 * l, -20));
    }
}

// Before a method gets hold of the memory another thread replaces it.
TEST(ImageServer, LetsOneThreadAtATimeReachTheMemory) {
    StackObject<IUnknown> keep;
    const TestedImage image(__uuidof(TalImage8Grey));
    std::uint8_t own[2][16]{};
    for (const int method : {0, 1, 2, 3}) {
        int calls = 0;
        ImportHook<HOOK(AcquireSRWLockExclusive)> enter(imageModule(), [&](SRWLOCK* lock) {
            if (++calls == 1) {
                std::thread([&] { image.wrap(0, 5, 2, own[0], 8, &keep); }).join();
            }
            enter.original(lock);
        });
        const ImportHook<HOOK(ReleaseSRWLockExclusive)> leave(imageModule(), [&](SRWLOCK* lock) {
            EXPECT_LT(0, keep.references) << "let go of before the lock";
            leave.original(lock);
        });
        if (method < 2) {
            EXPECT_EQ(S_OK, method ? image.memory->Allocate(9, 9, 1) : image.wrap(0, 3, 2, own[1], 8));
        } else {
            EXPECT_TRUE(method == 2 ? image.open(0) == Target(own[0], 8) : image.size() == std::pair(5L, 2L));
        }
        EXPECT_EQ(method < 3 ? 2 : 3, calls) << "locks";
        EXPECT_EQ(method < 2 ? 0 : 1, keep.references);
    }
}

} // namespace
} // namespace talx::test
