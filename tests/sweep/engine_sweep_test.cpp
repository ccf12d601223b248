// The failure sweep over the methods of both engines.
#include "tests/ddraw/ddraw_view.h"
#include "tests/support/event_sink.h"
#include "tests/sweep/sweep.h"

namespace talx::test {
namespace {

enum class Kind { gdi, fakeDirectDraw, directDraw };

// An image of the library, all zero.
ComPtr<ITalImage> libraryImage(const CLSID& clsid, long planes) {
    const auto memory = createObject<ITalImageMemory>(imageModule(), clsid);
    ComPtr<ITalImage> image;
    EXPECT_EQ(S_OK, memory->Allocate(8, 8, planes));
    EXPECT_EQ(S_OK, memory.As(&image));
    return image;
}

// An engine, what it draws and where to.
struct EngineSweep : testing::TestWithParam<Kind> {
    static constexpr int width = 30, height = 20;

    EngineSweep() {
        if (GetParam() == Kind::fakeDirectDraw) {
            display.emplace(engineModule());
            display->bits = static_cast<DWORD>(GetDeviceCaps(caller.dc, BITSPIXEL));
            display->redMask = display->bits == 16 ? 0xF800 : 0xFF0000;
            display->fails = [this](const std::string& call) {
                return sweep->fail(call).has_value();
            };
        }
        classObject(engineModule(), gdi ? __uuidof(TalGDIRenderEngine) : __uuidof(TalRenderEngine),
                    IID_PPV_ARGS(&factory));
        sweep.emplace(std::vector{engineModule(), imageModule()});
        sweep->source = gdi ? L"Hemlar.TalGDIRenderEngine.1" : L"Hemlar.TalRenderEngine.1";
    }
    ~EngineSweep() override { release(); }

    void create() {
        EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_PPV_ARGS(&engine)));
        engine.As(&targets);
        engine.As(&scaling);
    }
    HRESULT initialize() { return engine->Initialize(window.value(), width, height); }
    void release() {
        picture.Reset();
        SafeArrayDestroy(std::exchange(result, nullptr));
        targets.Reset();
        scaling.Reset();
        engine.Reset();
        EXPECT_EQ(0u, colors.array->cLocks + bytes.array->cLocks);
        for (const TestImage& image : images) {
            EXPECT_EQ(0, image.references) << "of an image";
        }
        if (display) {
            EXPECT_EQ(0, display->objects);
            display->calls.clear();
        }
    }
    // The pixels of the buffer, after all images are drawn.
    std::vector<std::uint8_t> pixels() {
        for (TestImage& image : images) {
            draw(image.image(), 1, 0);
        }
        if (!display) {
            const BitmapBits bits = compositionBits(engine.Get());
            return {bits.row(0), bits.row(bits.height())};
        }
        return display->surfaces.contains("buffer") ? display->surfaces["buffer"]->memory
                                                    : std::vector<std::uint8_t>();
    }
    void run(const Operation& operation) {
        const bool fresh = operation.method == L"Initialize", created = operation.method == L"CreateInstance";
        const bool kept = GetParam() == Kind::directDraw && !fresh; // it takes long to set up
        // What Direct3D draws does not look like what is drawn where it has failed.
        const bool shows =
            !created && GetParam() != Kind::directDraw && (gdi || operation.method != L"DrawIcon8");
        sweep->run(
            operation,
            [&] {
                if (!created && !(kept && engine)) {
                    create();
                    EXPECT_EQ(S_OK, fresh ? S_OK : initialize());
                }
            },
            [&] { kept ? void() : release(); },
            [&] { return shows ? pixels() : std::vector<std::uint8_t>(); });
    }
    HRESULT draw(ITalImage* image, double scale, int method) {
        scaling->put_ScalingMethod(static_cast<TalRenderEngineScalingMethodConstants>(method));
        return engine->DrawImage(0, image, 2, 1, scale, least, least, most, most, 0);
    }
    HRESULT drawIcon(double scale) {
        return engine->DrawIcon8(0, images[0].icon(), &colors.array, &bytes.array, 3.5, 4, scale, least,
                                 least, most, most);
    }
    HRESULT refresh() { return engine->RefreshScreen(40, 30, 0, 0, width, height); }
    HRESULT makePicture(int format) {
        return targets->CreateDIBRenderTarget(static_cast<TalRenderTargetFormatConstants>(format), &picture);
    }

    const bool gdi = GetParam() == Kind::gdi;
    BYTE plane[256]{1, 9, 200, 90, 0, 255};
    TestImage images[4]{{ImageKind::grey8, 8, 8, {{plane, 8}}},
                        {ImageKind::color, 8, 8, {{plane, 8}, {plane + 64, 8}, {plane + 9, 8}}},
                        {ImageKind::grey16, 8, 8, {{plane, 16}}, 5},
                        {ImageKind::range16, 8, 8, {{plane, 16}, {plane, 8}}}};
    const ComPtr<ITalImage> libraryImages[4]{
        libraryImage(__uuidof(TalImage8Grey), 1), libraryImage(__uuidof(TalImageColor), 3),
        libraryImage(__uuidof(TalImage16Grey), 1), libraryImage(__uuidof(TalImage16Range), 2)};
    TestArray colors{VT_I4, std::vector<long>(256, 0x123456)}, bytes{VT_UI1, 256};
    TestWindow window{40, 30, 60, 40};
    TestContext caller{width, height};
    std::optional<FakeDisplay> display;
    ComPtr<IClassFactory> factory;
    ComPtr<ITalRenderEngine2> engine;
    ComPtr<ITalRenderEngineScalingParams> scaling;
    ComPtr<ITalRenderTargetAccess> targets;
    ComPtr<IPictureDisp> picture;
    SAFEARRAY* result = nullptr;
    std::optional<Sweep> sweep;
};

TEST_P(EngineSweep, SetsUp) {
    run({L"Initialize", [&] {
             return initialize();
         }});
    run({L"PaletteChange", [&] {
             return engine->PaletteChange();
         }});
    for (IUnknown* const outer : {static_cast<IUnknown*>(nullptr), static_cast<IUnknown*>(factory.Get())}) {
        run({L"CreateInstance", [&] {
                 ComPtr<IUnknown> made;
                 const HRESULT hr = factory->CreateInstance(outer, IID_PPV_ARGS(&made));
                 return made || FAILED(hr) ? hr : S_FALSE;
             }});
    }
    if (GetParam() == Kind::directDraw) {
        return;
    }
    if (display) {
        display->bornLost = true;
        run({L"Initialize", [&] { return initialize(); }, S_OK, [&] { // the display comes late
                 display->refuse = {"DirectDrawCreate"};
                 create();
                 display->refuse.clear();
             }});
    }
    for (const auto& [w, h] : {std::pair{width + 9, height + 3}, {width, 5}, {0, 0}}) {
        run({L"SetExtent", [&] { return engine->SetExtent(w, h); }, gdi && w == 0 ? noSection : S_OK});
    }
}

TEST_P(EngineSweep, Draws) {
    const bool slow = GetParam() == Kind::directDraw;
    for (int i = slow ? 4 : 0; i < 8; ++i) {
        ITalImage* const image = i < 4 ? images[i].image() : libraryImages[i - 4].Get();
        for (const auto& [scale, method] : {std::pair{1.0, 0}, {2.1, 0}, {0.7, 1}}) {
            run({L"DrawImage", [&] {
                     return draw(image, scale, method);
                 }});
        }
    }
    TestImage unreadable(ImageKind::grey8, 8, 8, {{nullptr, 8}});
    run({L"DrawImage", [&] { return draw(unreadable.image(), 1, 0); }, noPixelData});
    for (const BYTE transparency : {30, 0, 100}) {
        std::fill_n(static_cast<BYTE*>(bytes.array->pvData), 256, transparency);
        for (const double scale : {1.0, 1.7}) {
            slow&& transparency != 30 ? void() : run({L"DrawIcon8", [&] {
                                                          return drawIcon(scale);
                                                      }});
        }
    }
    for (const OLE_COLOR color : {0x112233u, 0x80000005u, 0x80FFFFFFu}) {
        run({L"Fill", [&] { return engine->Fill(0, 3, 4, 9, 9, color); },
             color > 0x80000005u ? E_INVALIDARG : S_OK});
    }
    EventSink sink;
    sink.answer = [&](const LayerEvent&) {
        engine->Fill(0, 0, 0, 9, 9, 0);
        draw(images[0].image(), 1, 0);
        takeErrorInfo();
    };
    const auto before = [&] {
        engine->AdviseRenderEvents(&sink);
        engine->put_Layers(3);
    };
    run({L"BeginLayerUpdate", [&] { return engine->BeginLayerUpdate(1, 0, 0, 20, 20); }, S_OK, before, false,
         true});
    run({L"EndLayerUpdate", [&] { return engine->EndLayerUpdate(1, 0, 0, 20, 20); }, S_OK, before, false,
         true});
}

TEST_P(EngineSweep, Shows) {
    __int64 dc = 0;
    run({L"ReleaseDrawContext", [&] { return engine->ReleaseDrawContext(0, dc); },
         GetParam() == Kind::directDraw ? E_FAIL : S_OK}); // it has not been lent
    run({L"GetDrawContext", [&] { return engine->GetDrawContext(0, &dc); }, S_OK,
         [&] {
             engine->ReleaseDrawContext(0, std::exchange(dc, 0));
         }});
    release();
    run({L"RefreshScreen", [&] {
             return refresh();
         }});
    for (const int format : {0, 8, 16, 24}) {
        const auto make = [&] {
            makePicture(format);
        };
        if (gdi) {
            run({L"CreateDIBRenderTarget", [&] {
                     return makePicture(format);
                 }});
            run({L"SetRenderTargetFromDIB", [&] { return targets->SetRenderTargetFromDIB(picture.Get()); },
                 S_OK, make});
            run({L"RefreshScreen", [&] { return refresh(); }, S_OK,
                 [&] {
                     make();
                     targets->SetRenderTargetFromDIB(picture.Get());
                 }});
            run({L"SetRenderTargetFromHDC", [&] {
                     const HRESULT hr = targets->SetRenderTargetFromHDC(caller.value());
                     return SUCCEEDED(hr) ? refresh() : hr;
                 }});
        }
    }
}

TEST_P(EngineSweep, SetsColors) {
    using Engine = ITalRenderEngine2;
    const struct {
        std::wstring name, clearName;
        HRESULT (WINAPI Engine::*get)(SAFEARRAY**);
        HRESULT (WINAPI Engine::*put)(SAFEARRAY**);
        HRESULT (WINAPI Engine::*clear)();
    } maps[] = {{L"Image8GreyWhole", L"Image8Grey", &Engine::get_Image8GreyWholeColorMap,
                 &Engine::put_Image8GreyWholeColorMap, &Engine::ClearImage8GreyColorMap},
                {L"Image16Grey", L"Image16Grey", &Engine::get_Image16GreyColorMap,
                 &Engine::put_Image16GreyColorMap, &Engine::ClearImage16GreyColorMap},
                {L"Image16Range", L"Image16Range", &Engine::get_Image16RangeColorMap,
                 &Engine::put_Image16RangeColorMap, &Engine::ClearImage16RangeColorMap}};
    for (const auto& map : maps) {
        const auto put = [&] {
            return (engine.Get()->*map.put)(&colors.array);
        };
        run({L"put_" + map.name + L"ColorMap", put});
        run({L"get_" + map.name + L"ColorMap", [&] { return (engine.Get()->*map.get)(&result); }, S_OK, put});
        SafeArrayDestroy(std::exchange(result, nullptr));
        run({L"Clear" + map.clearName + L"ColorMap", [&] { return (engine.Get()->*map.clear)(); }, S_OK,
             put});
    }
    run({L"get_Image8GreyColorMap", [&] {
             return engine->put_Image8GreyColorMap(9, 0x80000005);
         }});
    run({L"UnsetColorMaps", [&] {
             return engine->UnsetColorMaps();
         }});
    run({L"get_Initialized", [&] {
             long a = 0, b = 0;
             OLE_COLOR color = 0;
             VARIANT_BOOL on = 0;
             TalRenderEngineScalingMethodConstants method{};
             return engine->get_Initialized(&on) | engine->GetExtent(&a, &b) | engine->get_Layers(&a) |
                    engine->get_Image8GreyColorMap(3, &color) | engine->UnAdvise() |
                    engine->put_VisiblePixelMaskEnable(VARIANT_TRUE) |
                    engine->get_VisiblePixelMaskEnable(&on) | engine->put_VisiblePixelMaskColor(0x345678) |
                    engine->get_VisiblePixelMaskColor(&color) | scaling->get_ScalingMethod(&method);
         }});
}

INSTANTIATE_TEST_SUITE_P(Of, EngineSweep, testing::Values(Kind::gdi, Kind::fakeDirectDraw, Kind::directDraw));

} // namespace
} // namespace talx::test
