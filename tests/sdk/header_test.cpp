// talxrend.hpp: that nothing which it takes over from an owner is lost on the way.
#include "tests/support/engine_bits.h"
#include "tests/support/module.h"

#include <talxrend.hpp>

namespace talx::test {
namespace {

using namespace talxrend;

template <class Call>
Failure failureOf(Call&& call) {
    try {
        return call(), Failure(S_OK, "nothing was thrown");
    } catch (const Failure& failure) {
        return failure;
    }
}

struct SdkHeader : testing::Test {
    void draw(long layer) {
        drawn.push_back(layer);
        destroys ? engine.reset() : void();
        layer == failing ? throw std::runtime_error("drawing") : void();
    }

    const TestWindow window{50, 40, 60, 50};
    const RECT part{1, 2, 30, 20};
    std::vector<long> drawn;
    long failing = -1;
    bool destroys = false;
    std::optional<Engine> engine{std::in_place, create<ITalRenderEngine2>(__uuidof(TalGDIRenderEngine)),
                                 window.handle(), 4, [this](long layer, const RECT&) {
                                     draw(layer);
                                 }};
};

TEST_F(SdkHeader, ThrowsWhatTheEngineSays) {
    const Failure failure = failureOf([&] { engine->fill(0, part, 0xFF0000FF); });
    EXPECT_EQ(E_INVALIDARG, failure.code());
    EXPECT_EQ(L"Hemlar.TalGDIRenderEngine.1", failure.source());
    EXPECT_STREQ("Fill: Unable to translate color (0x80070057)", failure.what());

    // An object that leaves no error information does not get an older failure's.
    ComPtr<IStream> stream;
    ASSERT_EQ(S_OK, CreateStreamOnHGlobal(nullptr, TRUE, &stream));
    engine->object()->Fill(0, 0, 0, 9, 9, 0xFF0000FF);
    EXPECT_EQ(L"", failureOf([&] { check(E_FAIL, stream, "stream"); }).text());
}

TEST_F(SdkHeader, ThrowsWhatDrawingThrew) {
    engine->update(2, part);
    EXPECT_EQ((std::vector<long>{0, 1, 2, 3}), std::exchange(drawn, {}));
    failing = 0; // below: the update does not begin
    EXPECT_THROW(LayerUpdate(*engine, 2, part), std::runtime_error);
    EXPECT_EQ((std::vector<long>{0}), drawn);
    failing = 2; // above
    LayerUpdate update(*engine, 1, part);
    EXPECT_THROW(update.end(), std::runtime_error);
    EXPECT_NO_THROW(update.end()) << "it has ended";
    { const LayerUpdate lost(*engine, 1, part); }
    failing = -1;
    EXPECT_NO_THROW(engine->update(1, part)) << "a failure that was swallowed comes late";
    destroys = true;
    drawn.clear();
    engine->update(3, part);
    EXPECT_TRUE(!engine && drawn == std::vector<long>{0}) << "draws for an owner that has gone";
}

TEST_F(SdkHeader, CarriesColorMaps) {
    const std::vector<std::uint32_t> map{0xFF0000FF, 0xFF804020, 0xFFFFFFFF};
    engine->put8GreyMap(map);
    engine->put16GreyMap(std::span(map).first(2));
    EXPECT_EQ(map, engine->get8GreyMap());
    EXPECT_EQ(std::vector(map.begin(), map.begin() + 2), engine->get16GreyMap());
    EXPECT_TRUE(engine->get16RangeMap().empty());
}

TEST_F(SdkHeader, WrapsMemoryAndKeepsIt) {
    const std::uint8_t bytes[] = {1, 2, 3, 4, 5, 6};
    const auto words = std::make_shared<std::vector<std::uint16_t>>(4);
    int released = 0;
    auto count = keepAlive([&released, owned = std::make_unique<int>()] { ++released; });
    auto grey = wrap8Grey({2, 2}, {bytes + 3, -3}, count);
    auto color = wrapColor({1, 2}, {bytes, 1}, {bytes + 2, 1}, {bytes + 4, 1}, std::exchange(count, nullptr));
    EXPECT_EQ(1, PlaneAccess(grey.Get(), 0, talPelAccessRead).row<std::uint8_t>(1)[0]);
    EXPECT_EQ(6, PlaneAccess(color.Get(), 2, talPelAccessRead).row<std::uint8_t>(1)[0]);
    grey = nullptr;
    EXPECT_EQ(0, released);
    color = nullptr;
    EXPECT_EQ(1, released);

    auto deep = wrap16Grey({2, 2}, {words->data(), 4}, talDepth12, keepAlive(words));
    std::optional<PlaneAccess> access(std::in_place, deep.Get(), 0, talPelAccessRead);
    deep = nullptr;
    EXPECT_EQ(2, words.use_count());
    access.reset();
    EXPECT_EQ(1, words.use_count());
    const Failure failure = failureOf([&] { (void)wrap16Range({9, 9}, {words->data(), 8}); });
    EXPECT_EQ(L"RowStride is less than a row of Width pels.", failure.text());
}

// Also that a draw context which the engine does not take back is told.
TEST_F(SdkHeader, ShowsWhatIsOnTheScreenOfAView) {
    const HDC screen = GetDC(nullptr); // for the life of the program
    const long right = GetSystemMetrics(SM_CXSCREEN) - 20;
    const TestWindow leaving(right, -10, 40, 30);
    Engine directDraw(create<ITalRenderEngine2>(__uuidof(TalRenderEngine)), leaving.handle(), 1,
                      [](long, const RECT&) {});
    DrawContext context(directDraw, 0, {0, 0, 20, 20});
    const RECT all = directDraw.extent();
    FillRect(context, &all, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH))); // above and left of (20, 20)
    directDraw->ReleaseDrawContext(0, reinterpret_cast<__int64>(HDC(context)));
    EXPECT_EQ(E_FAIL, failureOf([&] { context.end(); }).code());
    directDraw.show(all);
    for (int i = 0; i < 20 && GetPixel(screen, right + 19, 9) != 0; ++i) {
        Sleep(20); // the window's own background may still be on its way and win
        directDraw.show(all);
    }
    EXPECT_EQ(0, GetPixel(screen, right + 19, 9));
    EXPECT_EQ(0xFFFFFF, GetPixel(screen, right + 19, 10));
    EXPECT_NO_THROW(directDraw.show({20, 0, 40, 30})); // nothing of this is on the screen
}

TEST(SdkLibrary, ServesClassesOfDllsThatNobodyRegistered) {
    const std::wstring path = L"C:\\not registered.dll";
    ASSERT_TRUE(CopyFileW(pathOf(imageModule()).c_str(), path.c_str(), FALSE));
    {
        const Library library(path);
        const ServedClass served(library, __uuidof(TalImage8Grey));
        ComPtr<IClassFactory> found;
        CoGetClassObject(__uuidof(TalImage8Grey), CLSCTX_INPROC_SERVER, nullptr, IID_PPV_ARGS(&found));
        EXPECT_EQ(library.classObject(__uuidof(TalImage8Grey)).Get(), found.Get());
    }
    EXPECT_EQ(nullptr, GetModuleHandleW(path.c_str()));
    auto left = Library(path).create<ITalImage>(__uuidof(TalImage8Grey));
    const HMODULE module = GetModuleHandleW(path.c_str());
    EXPECT_TRUE(module) << "unloaded while in use";
    left = nullptr;
    FreeLibrary(module);
}

} // namespace
} // namespace talx::test
