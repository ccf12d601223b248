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

// Goes through lives, after some in which the platform takes what it keeps. Its DirectDraw keeps something
// each time.
template <class Live>
void expectFlat(int lives, bool directDraw, const Live& live) {
    Holdings before;
    for (int i = -lives / 4 - 4; i < lives; ++i) {
        before = i == 0 ? Holdings::now() : before;
        live(i & 0xFFFFFF);
    }
    const Holdings after = Holdings::now();
    EXPECT_LT(after.blocks, before.blocks + 8 + lives * (directDraw ? 2 : 0.25));
    EXPECT_LT(after.bytes, before.bytes + (2 << 20) + lives * (directDraw ? 1 << 20 : 0));
    EXPECT_LT(after.handles, before.handles + 8 + lives / 4);
}

void repaint(const ComPtr<ITalRenderEngine2>& engine, int i) {
    EventSink sink;
    Random random(i & 63);
    Drawing picture(random, Drawing::image, true, static_cast<model::Kind>(i & 3)),
        icon(random, Drawing::icon, true);
    sink.answer = [&](const LayerEvent&) {
        picture.draw(engine.Get(), everywhere);
    };
    EXPECT_EQ(S_OK, engine->put_Layers(2));
    EXPECT_EQ(S_OK, engine->AdviseRenderEvents(&sink));
    EXPECT_EQ(S_OK, engine->SetExtent(40 + i % 5, 30));
    EXPECT_EQ(S_OK, engine->put_Image16GreyColorMap(&icon.colors.array));
    EXPECT_EQ(S_OK, engine->BeginLayerUpdate(1, least, least, most, most));
    EXPECT_EQ(S_OK, icon.draw(engine.Get(), everywhere));
    EXPECT_EQ(S_OK, engine->EndLayerUpdate(1, least, least, most, most));
    EXPECT_EQ(S_OK, engine->Fill(0, 1, 1, 5, 5, white));
    EXPECT_EQ(E_POINTER, engine->GetExtent(nullptr, nullptr));
    ComPtr<ITalRenderTargetAccess> targets;
    ComPtr<IPictureDisp> target;
    if (i % 3 == 0 && SUCCEEDED(engine.As(&targets))) {
        EXPECT_EQ(S_OK, targets->CreateDIBRenderTarget(talRenderTargetFormatRGB24, &target));
        EXPECT_EQ(S_OK, targets->SetRenderTargetFromDIB(target.Get()));
    }
    EXPECT_EQ(S_OK, engine->RefreshScreen(0, 0, 0, 0, 40, 30));
    EXPECT_EQ(S_OK, targets ? targets->SetRenderTargetFromHDC(0) : S_OK);
    EXPECT_EQ(S_OK, engine->UnAdvise());
}

TEST(LongLifeOnScreen8, OfEnginesAndOfOneEngine) {
    for (const bool directDraw : {false, true}) {
        EngineView view(directDraw, 32);
        const auto live = [&](int i) {
            repaint(view.engine, i);
            view.display ? view.display->calls.clear() : void();
        };
        view.initialize(view.engine.Get());
        expectFlat(1500 * testFactor(), false, live);
        expectFlat(500 * testFactor(), false, [&](int i) {
            view.engine.Reset();
            EXPECT_EQ(0u, view.leaks.live());
            view.engine = view.newEngine();
            view.initialize(view.engine.Get());
            live(i);
        });
    }
}

TEST(LongLifeOnScreen8, OfThreads) {
    EngineView::window(); // of this thread
    imageModule();
    expectFlat(12 * testFactor(), true, [](int) {
        const auto work = [](const CLSID& clsid, int repaints) {
            EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
            auto engine = createObject<ITalRenderEngine2>(engineModule(), clsid);
            EngineView::initialize(engine.Get());
            for (int i = 0; i < repaints; ++i) {
                repaint(engine, i);
            }
            engine.Reset();
            CoUninitialize();
        };
        std::thread other(work, __uuidof(TalRenderEngine), 1);
        std::thread(work, __uuidof(TalGDIRenderEngine), 50).join();
        other.join();
    });
}

TEST(LongLifeOnScreen8, OfModules) {
    expectFlat(40 * testFactor(), false, [](int i) {
        const std::string copy = "C:\\long-life-" + std::to_string(i) + ".dll";
        const auto& [path, clsid] = i % 2 ? std::pair(TALXREND_PATH, __uuidof(TalGDIRenderEngine))
                                          : std::pair(TALXSTD_PATH, __uuidof(TalImageColor));
        EXPECT_TRUE(CopyFileA(path, copy.c_str(), FALSE));
        const HMODULE module = LoadLibraryA(copy.c_str());
        EXPECT_TRUE(module && createObject<IUnknown>(module, clsid));
        EXPECT_TRUE(FreeLibrary(module) && !GetModuleHandleA(copy.c_str()) && DeleteFileA(copy.c_str()));
    });
}

} // namespace
} // namespace talx::test
