// A process that uses engines for long: what it holds does not grow.
#include "tests/images/painting.h"
#include "tests/support/event_sink.h"

#include <psapi.h>

#include <thread>

namespace talx::test {
namespace {

// What the process holds.
struct Holdings {
    int blocks = 0; // in use, in all heaps
    SIZE_T bytes = 0;
    INT_PTR handles = 0; // the number of the first free one

    static Holdings now() {
        Holdings result;
        HANDLE heaps[64];
        for (DWORD i = 0, count = GetProcessHeaps(64, heaps); i < count; ++i) {
            for (PROCESS_HEAP_ENTRY entry{}; HeapWalk(heaps[i], &entry);) {
                result.blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
            }
        }
        PROCESS_MEMORY_COUNTERS counters{};
        GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
        result.bytes = counters.PagefileUsage;
        const HANDLE free = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        result.handles = reinterpret_cast<INT_PTR>(free) / 4;
        CloseHandle(free);
        return result;
    }
};

void repaint(const ComPtr<ITalRenderEngine2>& engine, int i) {
    EventSink sink;
    sink.answer = [&](const LayerEvent&) {
        Random random(i);
        for (const auto what : {Drawing::fill, Drawing::image, Drawing::icon}) {
            Drawing drawing(random, what, false, static_cast<model::Kind>(i & 3));
            EXPECT_EQ(S_OK, drawing.draw(engine.Get(), everywhere));
        }
    };
    TestArray colors(VT_I4, std::vector<int>(i % 500));
    EXPECT_EQ(S_OK, engine->put_Layers(2));
    EXPECT_EQ(S_OK, engine->AdviseRenderEvents(&sink));
    EXPECT_EQ(S_OK, engine->SetExtent(40 + i % 5, 30));
    EXPECT_EQ(S_OK, engine->put_Image16GreyColorMap(&colors.array));
    EXPECT_EQ(S_OK, engine->EndLayerUpdate(1, least, least, most, most));
    EXPECT_EQ(E_POINTER, engine->GetExtent(nullptr, nullptr));
    ComPtr<ITalRenderTargetAccess> targets;
    ComPtr<IPictureDisp> target;
    if (SUCCEEDED(engine.As(&targets))) {
        EXPECT_EQ(S_OK, targets->CreateDIBRenderTarget(talRenderTargetFormatRGB24, &target));
        EXPECT_EQ(S_OK, targets->SetRenderTargetFromDIB(target.Get()));
    }
    EXPECT_EQ(S_OK, engine->RefreshScreen(0, 0, 0, 0, 40, 30));
    EXPECT_EQ(S_OK, engine->UnAdvise());
}

// Every life repaints by the same engine, and by one of its own on a thread of its own; and loads a copy of a
// DLL.
TEST(LongLifeOnScreen8, HoldsNoMoreThanAtItsBeginning) {
    for (const bool directDraw : {false, true}) {
        EngineView view(directDraw, 32);
        view.initialize(view.engine.Get());
        const int lives = 300 * testFactor();
        Holdings before;
        for (int i = -lives / 4; i < lives; ++i) { // at first the platform takes what it keeps
            before = i == 0 ? Holdings::now() : before;
            std::thread other([&] {
                EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
                auto engine = view.newEngine();
                view.initialize(engine.Get());
                repaint(engine, i & 0xFFFF);
                engine.Reset();
                CoUninitialize();
            });
            directDraw ? other.join() : void(); // the display is not made for two at once
            repaint(view.engine, i & 0xFFFF);
            directDraw ? void() : other.join();
            view.display ? view.display->calls.clear() : void();
            const std::string copy = "C:\\long-life-" + std::to_string(i) + ".dll";
            EXPECT_TRUE(CopyFileA(i % 2 ? TALXREND_PATH : TALXSTD_PATH, copy.c_str(), FALSE));
            const HMODULE module = LoadLibraryA(copy.c_str());
            EXPECT_TRUE(module && createObject<IUnknown>(module, i % 2 ? __uuidof(TalGDIRenderEngine)
                                                                       : __uuidof(TalImageColor)));
            EXPECT_TRUE(FreeLibrary(module) && DeleteFileA(copy.c_str()));
        }
        const Holdings after = Holdings::now();
        EXPECT_LT(after.blocks, before.blocks + 8 + lives / 4);
        EXPECT_LT(after.bytes, before.bytes + (2 << 20));
        EXPECT_LT(after.handles, before.handles + 8 + lives / 4);
    }
}

} // namespace
} // namespace talx::test
