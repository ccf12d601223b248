// The failure sweep over the methods of both engines.
#include "tests/ddraw/ddraw_view.h"
#include "tests/sweep/sweep.h"

namespace talx::test {
namespace {

// An engine, what it draws and where to.
struct EngineSweep : testing::TestWithParam<bool>, EngineView {
    EngineSweep()
        : EngineView(GetParam(), GetParam() ? GetDeviceCaps(TestContext(1, 1).dc, BITSPIXEL) : realScreen,
                     {}) {
        classObject(engineModule(), classId(), IID_PPV_ARGS(&factory));
        engine.Reset();
        if (display) {
            display->fails = [this](const std::string& call) {
                return sweep.fail(call).has_value();
            };
        }
        sweep.source = directDraw ? L"Hemlar.TalRenderEngine.1" : L"Hemlar.TalGDIRenderEngine.1";
        sweep.prepare = [this] {
            engine = newEngine();
            engine.As(&targets);
            initialize(engine.Get());
        };
        sweep.end = [this] {
            release();
        };
        sweep.state = [this] { // after all images are drawn
            for (TestImage& image : images) {
                draw(image, 1, 0);
            }
            const bool without = display && !display->surfaces.contains("buffer");
            return without ? std::vector<std::uint32_t>() : values();
        };
    }
    ~EngineSweep() override { release(); }

    void release() {
        picture.Reset();
        SafeArrayDestroy(std::exchange(result, nullptr));
        targets.Reset();
        engine.Reset();
        EXPECT_EQ(0u, icon.colors.array->cLocks + icon.transparencies.array->cLocks);
        for (const TestImage& image : images) {
            EXPECT_EQ(0, image.references) << "of an image";
        }
        EXPECT_TRUE(!display || display->objects == 0);
    }
    HRESULT draw(TestImage& image, double scale, int method) {
        setMethod(method);
        return engine->DrawImage(0, image.image(), 2, 1, scale, least, least, most, most, 0);
    }
    HRESULT refresh() { return engine->RefreshScreen(40, 30, 0, 0, width, height); }

    BYTE plane[256]{1, 9, 200, 90, 0, 255};
    TestImage images[4]{{ImageKind::grey8, 8, 8, {{plane, 8}}},
                        {ImageKind::color, 8, 8, {{plane, 8}, {plane + 64, 8}, {plane + 9, 8}}},
                        {ImageKind::grey16, 8, 8, {{plane, 16}}, 5},
                        {ImageKind::range16, 8, 8, {{plane, 16}, {plane, 8}}}};
    TestIcon icon{8};
    TestContext caller{width, height};
    ComPtr<IClassFactory> factory;
    ComPtr<ITalRenderTargetAccess> targets;
    ComPtr<IPictureDisp> picture;
    SAFEARRAY* result = nullptr;
    Sweep sweep{engineModule()};
};
INSTANTIATE_TEST_SUITE_P(OfDirectDraw, EngineSweep, testing::Bool());

TEST_P(EngineSweep, SetsUp) {
    const auto first = [this] {
        return engine->Initialize(reinterpret_cast<__int64>(window()), width, height);
    };
    const auto renew = [this] {
        engine = newEngine();
    };
    sweep.run({first, L"Initialize", renew});
    sweep.run({[&] { return engine->PaletteChange(); }, L"PaletteChange"});
    for (IUnknown* const outer : {static_cast<IUnknown*>(nullptr), static_cast<IUnknown*>(factory.Get())}) {
        const auto createOne = [&] {
            ComPtr<IUnknown> made;
            const HRESULT hr = factory->CreateInstance(outer, IID_PPV_ARGS(&made));
            return made || FAILED(hr) ? hr : S_FALSE;
        };
        sweep.run({createOne, L"CreateInstance"});
    }
    for (const auto& [w, h] : {std::pair{width + 9, height + 3}, {width, 5}, {0, 0}}) {
        const HRESULT expected = !directDraw && w == 0 ? noSection : S_OK;
        sweep.run({[&, w = w, h = h] { return engine->SetExtent(w, h); }, L"SetExtent", {}, expected});
    }
    if (display) {
        display->bornLost = true;
        const auto late = [&] { // the display comes late
            display->refuse = {"DirectDrawCreate"};
            renew();
            display->refuse.clear();
        };
        sweep.run({first, L"Initialize", late});
    }
}

TEST_P(EngineSweep, Draws) {
    for (TestImage& image : images) {
        for (const auto& [scale, method] : {std::pair{1.0, 0}, {2.1, 0}, {0.7, 1}}) {
            sweep.run(
                {[&, scale = scale, method = method] { return draw(image, scale, method); }, L"DrawImage"});
        }
    }
    TestImage unreadable(ImageKind::grey8, 8, 8, {{nullptr, 8}});
    sweep.run({[&] { return draw(unreadable, 1, 0); }, L"DrawImage", {}, noPixelData});
    for (const OLE_COLOR color : {0x112233u, 0x80000005u, 0x80FFFFFFu}) {
        const HRESULT expected = color > 0x80000005u ? E_INVALIDARG : S_OK;
        sweep.run({[&] { return engine->Fill(0, 3, 4, 9, 9, color); }, L"Fill", {}, expected});
    }
    // What Direct3D draws does not look like what is drawn where it has failed.
    sweep.state = directDraw && screenFormat > 16 ? nullptr : sweep.state;
    for (const BYTE transparency : {30, 0, 100}) {
        std::fill_n(static_cast<BYTE*>(icon.transparencies.array->pvData), 256, transparency);
        sweep.run({[&] { return icon.draw(engine, 3.5, 4); }, L"DrawIcon8"});
        sweep.run({[&] { return icon.draw(engine, 3.5, 4, 1.7); }, L"DrawIcon8"});
    }
}

TEST_P(EngineSweep, Shows) {
    __int64 dc = 0;
    const auto giveBack = [&] {
        engine->ReleaseDrawContext(0, std::exchange(dc, 0));
    };
    sweep.run({[&] { return engine->ReleaseDrawContext(0, dc); }, L"ReleaseDrawContext"});
    sweep.run({[&] { return engine->GetDrawContext(0, &dc); }, L"GetDrawContext", giveBack});
    sweep.run({[&] { return refresh(); }, L"RefreshScreen"});
    for (const int format : {0, 8, 16, 24}) {
        const auto make = [&] {
            const auto asked = static_cast<TalRenderTargetFormatConstants>(format);
            return targets->CreateDIBRenderTarget(asked, picture.ReleaseAndGetAddressOf());
        };
        const auto show = [&] {
            return targets->SetRenderTargetFromDIB(picture.Get());
        };
        const auto showNew = [&] {
            make();
            show();
        };
        const auto showOther = [&] {
            return targets->SetRenderTargetFromHDC(caller.value());
        };
        if (!directDraw) {
            sweep.run({make, L"CreateDIBRenderTarget"});
            sweep.run({show, L"SetRenderTargetFromDIB", make});
            sweep.run({[&] { return refresh(); }, L"RefreshScreen", showNew});
            sweep.run({showOther, L"SetRenderTargetFromHDC", showNew});
        }
    }
}

TEST_P(EngineSweep, SetsColors) {
    using Engine = ITalRenderEngine2;
    for (const auto& [name, getMap, putMap] :
         {std::tuple{L"Image8GreyWhole", &Engine::get_Image8GreyWholeColorMap,
                     &Engine::put_Image8GreyWholeColorMap},
          {L"Image16Grey", &Engine::get_Image16GreyColorMap, &Engine::put_Image16GreyColorMap},
          {L"Image16Range", &Engine::get_Image16RangeColorMap, &Engine::put_Image16RangeColorMap}}) {
        const auto put = [&, method = putMap] {
            return (engine.Get()->*method)(&icon.colors.array);
        };
        const auto get = [&, method = getMap] {
            return (engine.Get()->*method)(&result);
        };
        sweep.run({put, L"put_" + std::wstring(name) + L"ColorMap"});
        sweep.run({get, L"get_" + std::wstring(name) + L"ColorMap", put});
        sweep.run({[&] { return engine->UnsetColorMaps(); }, L"UnsetColorMaps", put});
    }
    // The name of the other method is told: owners know it.
    sweep.run({[&] { return engine->put_Image8GreyColorMap(9, 0x80000005); }, L"get_Image8GreyColorMap"});
}

} // namespace
} // namespace talx::test
