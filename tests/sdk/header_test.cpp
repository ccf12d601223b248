// talxrend.hpp: that nothing which it takes over from an owner is lost on the way.
#include "tests/support/engine_bits.h"
#include "tests/support/module.h"

#include <talxrend.hpp>

namespace talx::test {
namespace {

using namespace talxrend;

Failure failureOf(const std::function<void()>& call) try {
    return call(), Failure(S_OK, "nothing was thrown");
} catch (const Failure& failure) {
    return failure;
}

struct SdkHeader : testing::Test {
    const TestWindow window{50, 40, 60, 50};
    const RECT part{1, 2, 30, 20};
    std::vector<long> drawn;
    long failing = -1, destroying = -1;
    std::optional<Engine> engine{std::in_place, create<ITalRenderEngine2>(__uuidof(TalGDIRenderEngine)),
                                 window.handle(), 4, [this](long layer, const RECT&) {
                                     drawn.push_back(layer);
                                     layer == destroying ? engine.reset() : void();
                                     layer == failing ? throw std::runtime_error("drawing") : void();
                                 }};
};

TEST_F(SdkHeader, ThrowsWhatTheEngineSays) {
    const Failure failure = failureOf([&] { engine->fill(0, part, 0xFF0000FF); });
    EXPECT_EQ(L"Hemlar.TalGDIRenderEngine.1", failure.source());
    EXPECT_STREQ("Fill: Unable to translate color (0x80070057)", failure.what());
    // An object that leaves no error information does not get an older failure's.
    engine->object()->Fill(0, 0, 0, 9, 9, 0xFF0000FF);
    EXPECT_EQ(L"", failureOf([&] { check(E_FAIL, keepAlive([] {}), "object"); }).text());
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
    EXPECT_THROW(engine->check((*engine)->EndLayerUpdate(1, 1, 2, 30, 20), ""), std::runtime_error);
    failing = -1;
    EXPECT_NO_THROW(engine->update(1, part)) << "a failure that was swallowed comes late";
    destroying = 0;
    engine->update(3, part);
    EXPECT_TRUE(!engine && drawn.back() == 0) << "draws for an owner that has gone";
}

TEST_F(SdkHeader, CarriesColorMaps) {
    const std::vector<std::uint32_t> map{0xFF0000FF, 0xFF804020, 0xFFFFFFFF};
    engine->put8GreyMap(std::span(map).first(2));
    engine->put16GreyMap(map);
    EXPECT_EQ(std::vector(map.begin(), map.begin() + 2), engine->get8GreyMap());
    EXPECT_EQ(map, engine->get16GreyMap());
    EXPECT_TRUE(engine->get16RangeMap().empty());
}

TEST_F(SdkHeader, WrapsMemoryAndKeepsIt) {
    const std::uint8_t bytes[] = {1, 2, 3, 4, 5, 6};
    const auto words = std::make_shared<std::vector<std::uint16_t>>(4);
    int released = 0;
    auto color = wrapColor({1, 2}, {bytes + 1, -1}, {bytes + 2, 1}, {bytes + 4, 1},
                           keepAlive([&released, owned = std::make_unique<int>()] { ++released; }));
    EXPECT_EQ(1, PlaneAccess(color.Get(), 0, talPelAccessRead).row<std::uint8_t>(1)[0]);
    EXPECT_EQ(6, PlaneAccess(color.Get(), 2, talPelAccessRead).row<std::uint8_t>(1)[0]);
    EXPECT_EQ(0, released);
    color = nullptr;
    EXPECT_EQ(1, released);

    {
        const PlaneAccess access(wrap16Grey({2, 2}, {words->data(), 4}, talDepth12, keepAlive(words)).Get(),
                                 0, talPelAccessRead);
        EXPECT_EQ(2, words.use_count()) << "the image has gone, the access has not";
    }
    EXPECT_EQ(1, words.use_count());
    const Failure failure = failureOf([&] { (void)wrap16Range({9, 9}, {words->data(), 8}); });
    EXPECT_EQ(L"RowStride is less than a row of Width pels.", failure.text());
}

// Also that a draw context which the engine does not take back is told.
TEST_F(SdkHeader, ShowsWhatIsOnTheScreenOfAView) {
    const HDC screen = GetDC(nullptr); // for the life of the program
    const long right = GetSystemMetrics(SM_CXSCREEN) - 20;
    const TestWindow leaving(right, -10, 40, 30);
    Engine directDraw(create<ITalRenderEngine2>(__uuidof(TalRenderEngine)), leaving.handle(), 1, nullptr);
    DrawContext context(directDraw, 0, {0, 0, 20, 20});
    const RECT all = directDraw.extent();
    FillRect(context, &all, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH))); // above and left of (20, 20)
    directDraw->ReleaseDrawContext(0, reinterpret_cast<__int64>(HDC(context)));
    EXPECT_EQ(E_FAIL, failureOf([&] { context.end(); }).code());
    for (int i = 0; i < 20 && (i == 0 || GetPixel(screen, right + 19, 9) != 0); ++i) {
        directDraw.show(all);
        Sleep(20); // the window's own background may still be on its way and win
    }
    EXPECT_EQ(0, GetPixel(screen, right + 19, 9));
    EXPECT_EQ(0xFFFFFF, GetPixel(screen, right + 19, 10));
    EXPECT_NO_THROW(directDraw.show({20, 0, 40, 30})); // nothing of this is on the screen
}

TEST(SdkLibrary, ServesClassesOfDllsThatNobodyRegistered) {
    const wchar_t* path = L"C:\\not registered.dll";
    ASSERT_TRUE(CopyFileW(pathOf(imageModule()).c_str(), path, FALSE));
    {
        const Library library(path);
        const ServedClass served(library, __uuidof(TalImage8Grey));
        ComPtr<IClassFactory> found;
        CoGetClassObject(__uuidof(TalImage8Grey), CLSCTX_INPROC_SERVER, nullptr, IID_PPV_ARGS(&found));
        EXPECT_EQ(library.classObject(__uuidof(TalImage8Grey)).Get(), found.Get());
    }
    EXPECT_EQ(nullptr, GetModuleHandleW(path));
    const auto left = Library(path).create<ITalImage>(__uuidof(TalImage8Grey));
    EXPECT_TRUE(GetModuleHandleW(path)) << "unloaded while in use";
}

} // namespace
} // namespace talx::test
