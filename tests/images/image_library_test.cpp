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
    [[nodiscard]] Access open(long n) const {
        Access access;
        EXPECT_EQ(S_OK, memory->CreatePlaneAccess(n, talPelAccessReadWrite, &access));
        return access;
    }
    [[nodiscard]] std::pair<long, long> size() const {
        std::pair<long, long> size{-1, -1};
        EXPECT_EQ(S_OK, as<ITalImage>()->get_Width(&size.first));
        EXPECT_EQ(S_OK, as<ITalImage>()->get_Height(&size.second));
        return size;
    }
    const ComPtr<ITalImageMemory> memory;
};

TEST(ImageServer, SaysWhichArgumentIsWrong) {
    const TestedImage image(__uuidof(TalImageColor)), range(__uuidof(TalImage16Range));
    ITalImageMemory* const memory = image.memory.Get();
    IID face = __uuidof(ITalImageMemory);
    Access access, none;
    const auto fails = [&](HRESULT expected, const wchar_t* text, HRESULT actual,
                           const wchar_t* progId = L"Hemlar.TalImageColor.1") {
        const ErrorInfo info = takeErrorInfo();
        EXPECT_TRUE(actual == expected && info.interfaceId == face && info.source == progId && !none &&
                    info.description.find(text) != info.description.npos)
            << std::hex << actual << info.source << info.description;
    };
    fails(E_FAIL, L"no memory", memory->CreatePlaneAccess(0, reading, &none));
    EXPECT_EQ(S_OK, memory->Allocate(9, 7, 3));
    for (const auto& [w, h] : {std::pair(0, 7), {9, 0}, {-1, 7}, {9, -1}}) {
        fails(E_INVALIDARG, L"Width and Height must be at least 1", memory->Allocate(w, h, 3));
        fails(E_INVALIDARG, L"Width and Height must be at least 1", image.wrap(0, w, h, this, 90));
    }
    for (const bool above : {false, true}) {
        const long n = above ? 3 : -1;
        fails(E_INVALIDARG, L"Plane is not", image.wrap(n, 9, 7, this, 90));
        fails(E_INVALIDARG, L"Plane is not", memory->CreatePlaneAccess(n, reading, &none));
        fails(E_INVALIDARG, L"Mode",
              memory->CreatePlaneAccess(0, static_cast<TalPelAccessMode>(above ? 4 : 0), &none));
        fails(E_INVALIDARG, L"RowStride", image.wrap(0, 9, 7, this, above ? 8 : -8));
        fails(E_INVALIDARG, L"those of plane 0", image.wrap(1, 8 + above, 7 + above, this, 90));
    }
    fails(E_OUTOFMEMORY, L"RowStride", memory->Allocate(LONG_MAX, 1, 3));
    fails(E_OUTOFMEMORY, L"Width x Height", memory->Allocate(LONG_MAX / 4, LONG_MAX, 3));
    fails(E_POINTER, L"Data", image.wrap(0, 9, 7, nullptr, 90));
    fails(E_POINTER, L"ppAccess", memory->CreatePlaneAccess(0, reading, nullptr));

    face = __uuidof(ITalImageColor);
    const auto color = image.as<ITalImageColor>();
    ComPtr<IUnknown> plane;
    fails(E_POINTER, L"result", color->get_Width(nullptr));
    fails(E_POINTER, L"result", color->get_Height(nullptr));
    fails(E_POINTER, L"result", color->GetPlane(0, nullptr));
    fails(E_INVALIDARG, L"Plane", color->GetPlane(-1, &plane));
    fails(E_INVALIDARG, L"Plane", color->GetPlane(3, &plane));
    EXPECT_EQ(S_OK, color->GetPlane(2, &plane));

    face = __uuidof(ITalPelAccessSource);
    ComPtr<ITalPelAccessSource> source;
    EXPECT_EQ(S_OK, plane.As(&source));
    fails(E_POINTER, L"ppAccess", source->CreatePelAccess(reading, 0, 0, 0, 0, nullptr));
    fails(E_INVALIDARG, L"Left, Top", source->CreatePelAccess(reading, 1, 0, 9, 7, &none));
    EXPECT_EQ(S_OK, source->CreatePelAccess(reading, 1, 0, 8, 7, &access));
    EXPECT_EQ(std::pair(9L, 7L), image.size()) << "as it was";

    face = __uuidof(ITalPelAccess);
    fails(E_POINTER, L"result", access->get_Data(nullptr));
    fails(E_POINTER, L"result", access->get_RowStride(nullptr));
    EXPECT_EQ(S_OK, access->Unlock());
    fails(E_UNEXPECTED, L"unlocked already", access->Unlock());
    EXPECT_EQ(Target(nullptr, 0), target(access, E_UNEXPECTED));

    face = __uuidof(ITalImage16Range);
    const auto accesses = range.as<ITalImage16Range>();
    fails(E_POINTER, L"ppValues", accesses->CreatePelAccesses(nullptr, &none), L"Hemlar.TalImage16Range.1");
    fails(E_POINTER, L"ppMask", accesses->CreatePelAccesses(&none, nullptr), L"Hemlar.TalImage16Range.1");
    ComPtr<ISupportErrorInfo> support[4];
    EXPECT_TRUE(color.As(&support[0]) == S_OK && accesses.As(&support[1]) == S_OK);
    EXPECT_TRUE(plane.As(&support[2]) == S_OK && access.As(&support[3]) == S_OK);
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
                const auto [data, stride] = target(image.open(i));
                EXPECT_LE(1300 * (i ? 1 : bytes), stride);
                EXPECT_EQ(7 * stride, std::count(data, data + 7 * stride, 0));
                std::fill_n(data, 7 * stride, 255);
            }
        }
        const Access old = image.open(0);
        EXPECT_EQ(S_OK, image.memory->Allocate(1, 1, fewest));
        std::fill_n(target(old).first, 7 * target(old).second, 1); // lives as long as the access
    }
}

TEST(ImageServer, WrapsMemoryForAsLongAsItIsNeeded) {
    StackObject<IUnknown> keep, other;
    const TestedImage image(__uuidof(TalImage16Range)), grey(__uuidof(TalImage16Grey));
    std::uint8_t own[2][200]{};
    Access values, mask, part;
    EXPECT_EQ(std::pair(0L, 0L), image.size());
    EXPECT_EQ(S_OK, image.wrap(0, 9, 9, own[0] + 161, -20, &keep)); // the last row first
    EXPECT_EQ(S_OK, image.as<ITalImage16Range>()->CreatePelAccesses(&values, &mask));
    EXPECT_EQ(nullptr, mask.Get());
    EXPECT_EQ(S_OK, image.wrap(1, 9, 9, own[1], 10, &other));
    EXPECT_EQ(S_OK, image.as<ITalImage16Range>()->CreatePelAccesses(&values, &mask));
    EXPECT_EQ(Target(own[0] + 161, -20), target(values));
    EXPECT_EQ(Target(own[1], 10), target(mask));
    EXPECT_EQ(std::pair(9L, 9L), image.size());
    mask.Reset();
    EXPECT_EQ(S_OK, image.wrap(0, 1, 1, own[0], 0)) << "a single row needs no distance to the next";
    EXPECT_EQ(0, other.references) << "the other planes are dropped";
    EXPECT_LT(0, keep.references) << "the access needs the memory";
    values.Reset();
    EXPECT_EQ(0, keep.references);

    EXPECT_EQ(S_OK, grey.wrap(0, 2, 3, own[0] + 60, -20, &keep));
    const auto source = grey.as<ITalPelAccessSource16>();
    for (int i = 0; i < 7 * 7 * 7 * 7; ++i) { // all parts, and what is none, around two columns of three rows
        const long v[] = {-1, 0, 1, 2, 3, 4, LONG_MAX}, l = v[i % 7], t = v[i / 7 % 7], w = v[i / 49 % 7],
                   h = v[i / 343];
        const bool inside = l >= 0 && t >= 0 && w > 0 && h > 0 && w <= 2 - l && h <= 3 - t,
                   whole = !l && !t && !w && !h;
        ASSERT_EQ(inside || whole ? S_OK : E_INVALIDARG, source->CreatePelAccess(reading, l, t, w, h, &part));
        ASSERT_TRUE(!part || target(part) == Target(own[0] + 60 - 20 * t + 2 * l, -20));
    }
    EXPECT_EQ(S_OK, grey.memory->Allocate(2, 2, 1));
    EXPECT_EQ(0, keep.references);
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
        if (method < 2) {
            EXPECT_EQ(S_OK,
                      method ? image.memory->Allocate(9, 9, 1) : image.wrap(0, 3, 2, own[1], 8, nullptr));
        } else if (method == 2) {
            EXPECT_EQ(Target(own[0], 8), target(image.open(0)));
        } else {
            EXPECT_EQ(std::pair(5L, 2L), image.size());
        }
        EXPECT_EQ(method < 3 ? 2 : 3, calls);
        EXPECT_EQ(method < 2 ? 0 : 1, keep.references);
    }
}

} // namespace
} // namespace talx::test
