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
            const int depth = GetDeviceCaps(caller.dc, BITSPIXEL);
            display->bits = static_cast<DWORD>(depth);
            display->redMask = depth == 16 ? 0xF800 : 0xFF0000;
        }
        const bool gdi = GetParam() == Kind::gdi;
        clsid = gdi ? __uuidof(TalGDIRenderEngine) : __uuidof(TalRenderEngine);
        createObject<IUnknown>(engineModule(), clsid); // caches the class object
        sweep.emplace(std::vector{engineModule(), imageModule()});
        sweep->source = gdi ? L"Hemlar.TalGDIRenderEngine.1" : L"Hemlar.TalRenderEngine.1";
        if (display) {
            display->fails = [this](const std::string& call) {
                return sweep->fail(call).has_value();
            };
        }
    }

    ~EngineSweep() override { release(); }

    void create() {
        engine = createObject<ITalRenderEngine2>(engineModule(), clsid);
        engine.As(&targets);
        engine.As(&scaling);
    }
    void initialize() {
        create();
        EXPECT_EQ(S_OK, engine->Initialize(window.value(), width, height));
        EXPECT_EQ(S_OK, engine->Fill(0, 0, 0, width, height, RGB(90, 60, 30)));
    }
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
    // The pixels of the buffer.
    std::vector<std::uint8_t> pixels() {
        if (display) {
            return display->surfaces.contains("buffer") ? display->surfaces["buffer"]->memory
                                                        : std::vector<std::uint8_t>();
        }
        const BitmapBits bits = compositionBits(engine.Get());
        return {bits.row(0), bits.row(bits.height())};
    }
    void run(const Operation& operation) {
        if (GetParam() == Kind::directDraw) { // one for all rounds: it takes long to set up
            engine ? void() : initialize();
            return sweep->run(
                operation, [] {}, [] {});
        }
        // What Direct3D draws does not look like what is drawn where it has failed.
        const bool shown = !display || std::wstring(operation.method) != L"DrawIcon8";
        sweep->run(
            operation, [this] { initialize(); }, [this] { release(); },
            [=, this] { return shown ? pixels() : std::vector<std::uint8_t>(); });
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
    CLSID clsid;
    ComPtr<ITalRenderEngine2> engine;
    ComPtr<ITalRenderEngineScalingParams> scaling;
    ComPtr<ITalRenderTargetAccess> targets;
    ComPtr<IPictureDisp> picture;
    SAFEARRAY* result = nullptr;
    std::optional<Sweep> sweep;
};

TEST_P(EngineSweep, SetsUp) {
    const auto initialize = [this] {
        return engine->Initialize(window.value(), width, height);
    };
    const auto end = [this] {
        release();
    };
    if (display) {
        display->bornLost = true;
    }
    sweep->run(
        {L"Initialize", initialize}, [this] { create(); }, end);
    if (GetParam() == Kind::directDraw) {
        return;
    }
    if (display) { // without the display at first
        sweep->run(
            {L"Initialize", initialize},
            [this] {
                display->refuse = {"DirectDrawCreate"};
                create();
                display->refuse.clear();
            },
            end);
    }
    run({L"SetExtent", [this] {
             return engine->SetExtent(width + 9, height + 3);
         }});
    run({L"SetExtent", [this] {
             return engine->SetExtent(width, 5);
         }});
    run({L"SetExtent", [this] { return engine->SetExtent(0, 0); },
         GetParam() == Kind::gdi ? noSection : S_OK});
    run({L"PaletteChange", [this] {
             return engine->PaletteChange();
         }});
    run({L"GetClassInfo", [this] {
             ComPtr<IProvideClassInfo2> info;
             ComPtr<ITypeInfo> type;
             engine.As(&info);
             return info->GetClassInfo(&type);
         }});
    ComPtr<IClassFactory> factory;
    classObject(engineModule(), clsid, IID_PPV_ARGS(&factory));
    for (const bool aggregated : {false, true}) {
        sweep->run(
            {L"CreateInstance",
             [=, this] {
                 ComPtr<IUnknown> made;
                 const HRESULT hr =
                     factory->CreateInstance(aggregated ? images[0].image() : nullptr, IID_PPV_ARGS(&made));
                 EXPECT_EQ(SUCCEEDED(hr), made.Get() != nullptr);
                 return hr;
             }},
            [] {}, end);
    }
}

TEST_P(EngineSweep, Draws) {
    const bool slow = GetParam() == Kind::directDraw;
    for (int i = slow ? 4 : 0; i < 8; ++i) {
        ITalImage* const image = i < 4 ? images[i].image() : libraryImages[i - 4].Get();
        for (const auto& [scale, method] : {std::pair{1.0, 0}, {2.1, 0}, {0.7, 1}}) {
            run({L"DrawImage", [=, this] {
                     return draw(image, scale, method);
                 }});
        }
    }
    TestImage unreadable(ImageKind::grey8, 8, 8, {{nullptr, 8}});
    run({L"DrawImage", [&] { return draw(unreadable.image(), 1, 0); }, noPixelData});
    for (const BYTE transparency : {30, 0, 100}) {
        if (slow && transparency != 30) {
            break;
        }
        std::fill_n(static_cast<BYTE*>(bytes.array->pvData), 256, transparency);
        for (const double scale : {1.0, 1.7}) {
            run({L"DrawIcon8", [=, this] {
                     return drawIcon(scale);
                 }});
        }
    }
    for (const OLE_COLOR color : {0x112233u, 0x80000005u}) {
        run({L"Fill", [=, this] {
                 return engine->Fill(0, 3, 4, 9, 9, color);
             }});
    }
    run({L"Fill", [this] { return engine->Fill(0, 3, 4, 9, 9, 0x80FFFFFF); }, E_INVALIDARG});
    EventSink sink;
    sink.answer = [&](const LayerEvent&) {
        engine->Fill(0, 0, 0, 9, 9, 0);
        draw(images[0].image(), 1, 0);
        takeErrorInfo();
    };
    const auto update = [&](auto method) {
        engine->AdviseRenderEvents(&sink);
        engine->put_Layers(3);
        return (engine.Get()->*method)(1, 0, 0, 20, 20);
    };
    run({L"BeginLayerUpdate", [&] { return update(&ITalRenderEngine2::BeginLayerUpdate); }, S_OK, false,
         true});
    run({L"EndLayerUpdate", [&] { return update(&ITalRenderEngine2::EndLayerUpdate); }, S_OK, false, true});
}

TEST_P(EngineSweep, Shows) {
    __int64 dc = 0;
    run({L"ReleaseDrawContext", [&] { return engine->ReleaseDrawContext(0, dc); },
         GetParam() == Kind::directDraw ? E_FAIL : S_OK}); // it has not been lent
    sweep->run(
        {L"GetDrawContext",
         [&] {
             return engine->GetDrawContext(0, &dc);
         }},
        [this] { engine ? void() : initialize(); },
        [&] { engine->ReleaseDrawContext(0, std::exchange(dc, 0)); });
    release();
    run({L"RefreshScreen", [this] {
             return refresh();
         }});
    if (GetParam() != Kind::gdi) {
        return;
    }
    const auto create = [this](int format) {
        return targets->CreateDIBRenderTarget(static_cast<TalRenderTargetFormatConstants>(format), &picture);
    };
    for (const int format : {0, 8, 16, 24}) {
        run({L"CreateDIBRenderTarget", [=] {
                 return create(format);
             }});
        const auto toPicture = [=, this] {
            initialize();
            create(format);
        };
        sweep->run({L"SetRenderTargetFromDIB",
                    [this] {
                        return targets->SetRenderTargetFromDIB(picture.Get());
                    }},
                   toPicture, [this] { release(); });
        sweep->run(
            {L"RefreshScreen",
             [this] {
                 return refresh();
             }},
            [=, this] {
                toPicture();
                targets->SetRenderTargetFromDIB(picture.Get());
            },
            [this] { release(); });
    }
    run({L"SetRenderTargetFromHDC", [this] {
             const HRESULT hr = targets->SetRenderTargetFromHDC(caller.value());
             return SUCCEEDED(hr) ? refresh() : hr;
         }});
}

TEST_P(EngineSweep, SetsColors) {
    if (GetParam() == Kind::directDraw) {
        return; // there is no display in it
    }
    using Engine = ITalRenderEngine2;
    const struct {
        const wchar_t *get, *put, *clear;
        HRESULT (WINAPI Engine::*getter)(SAFEARRAY**);
        HRESULT (WINAPI Engine::*setter)(SAFEARRAY**);
        HRESULT (WINAPI Engine::*eraser)();
    } maps[] = {{L"get_Image8GreyWholeColorMap", L"put_Image8GreyWholeColorMap", L"ClearImage8GreyColorMap",
                 &Engine::get_Image8GreyWholeColorMap, &Engine::put_Image8GreyWholeColorMap,
                 &Engine::ClearImage8GreyColorMap},
                {L"get_Image16GreyColorMap", L"put_Image16GreyColorMap", L"ClearImage16GreyColorMap",
                 &Engine::get_Image16GreyColorMap, &Engine::put_Image16GreyColorMap,
                 &Engine::ClearImage16GreyColorMap},
                {L"get_Image16RangeColorMap", L"put_Image16RangeColorMap", L"ClearImage16RangeColorMap",
                 &Engine::get_Image16RangeColorMap, &Engine::put_Image16RangeColorMap,
                 &Engine::ClearImage16RangeColorMap}};
    // What the engine shows afterwards is what the map has become.
    const auto shown = [this] {
        for (TestImage& image : images) {
            draw(image.image(), 1, 0);
        }
        return pixels();
    };
    const auto whole = [&](const Operation& operation) {
        sweep->run(
            operation, [this] { initialize(); }, [this] { release(); }, shown);
    };
    for (const auto& map : maps) {
        whole({map.put, [&] {
                   return (engine.Get()->*map.setter)(&colors.array);
               }});
        sweep->run(
            {map.get,
             [&] {
                 return (engine.Get()->*map.getter)(&result);
             }},
            [&] {
                initialize();
                (engine.Get()->*map.setter)(&colors.array);
            },
            [this] { release(); });
        whole({map.clear, [&] {
                   return (engine.Get()->*map.eraser)();
               }});
    }
    whole({L"get_Image8GreyColorMap", [this] {
               return engine->put_Image8GreyColorMap(9, 0x80000005);
           }});
    whole({L"UnsetColorMaps", [this] {
               return engine->UnsetColorMaps();
           }});
    whole({L"get_Initialized", [this] {
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

std::string nameOf(const testing::TestParamInfo<Kind>& info) {
    const char* const names[] = {"Gdi", "FakeDirectDraw", "DirectDraw"};
    return names[static_cast<int>(info.param)];
}
INSTANTIATE_TEST_SUITE_P(Of, EngineSweep, testing::Values(Kind::gdi, Kind::fakeDirectDraw, Kind::directDraw),
                         nameOf);

} // namespace
} // namespace talx::test
