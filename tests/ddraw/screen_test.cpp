// The DirectDraw engine on the real screen.
#include "tests/ddraw/ddraw_view.h"

namespace talx::test {
namespace {

// Surfaces that the platform makes smaller than they say, and ones too large for any memory.
TEST(DdrawScreen, RefusesSurfacesThatAreNotThere) {
    const EngineView view(true, realScreen);
    const auto& engine = view.engine;
    view.initialize(engine.Get());
    for (const auto& [w, h] : {std::pair{536870913L, 53L}, {65536, 65536}}) {
        EXPECT_EQ(S_OK, engine->SetExtent(w, h));
        expectDirectDrawError(E_FAIL, bltFailedText, engine->Fill(0, 0, 0, w, h, 0));
        EXPECT_EQ(S_OK, TestIcon().draw(engine, w - 20, h - 20));
        EXPECT_TRUE(FAILED(view.newEngine()->Initialize(reinterpret_cast<__int64>(view.window()), w, h)));
    }
}

} // namespace
} // namespace talx::test
