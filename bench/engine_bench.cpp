// Times whole calls of the engines under Windows, each as a ratio to a plain step that is taken in the same
// round: copying the view's 32-bit pixels, or what the platform itself does for the same work.
//
//   engine_bench.exe [--only gdi|small|live|directdraw] [OTHER-talxrend.dll]
//
// It takes the registered DLLs. A second engine DLL, an older one for instance, is timed beside the
// registered one in the same rounds.
#include "bench/engine_calls.h"

#include "talxstd.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>

namespace talx::bench {

namespace {

constexpr long viewWidth = 1920;
constexpr long viewHeight = 1080;

void copyBytes(void* to, const void* from, std::size_t size) {
    asm volatile("rep movsb" : "+D"(to), "+S"(from), "+c"(size) : : "memory");
}
void setBytes(void* to, std::size_t size) {
    asm volatile("rep stosb" : "+D"(to), "+c"(size) : "a"(0x55) : "memory");
}
void setMethod(const std::vector<Engine>& engines, int method) {
    for (const Engine& engine : engines) {
        ComPtr<ITalRenderEngineScalingParams> scaling;
        check(engine.As(&scaling), "ITalRenderEngineScalingParams");
        scaling->put_ScalingMethod(static_cast<TalRenderEngineScalingMethodConstants>(method));
    }
}
// An 8-bit picture as GDI draws it itself.
struct GdiPicture {
    GdiPicture(long w, long h) : width(w), height(h), pixels((w + 3) / 4 * 4 * h) {
        std::minstd_rand random(1);
        std::generate(pixels.begin(), pixels.end(), [&] { return static_cast<std::uint8_t>(random() >> 8); });
        info.header = {sizeof info.header, w, -h, 1, 8, BI_RGB, 0, 0, 0, 256, 0};
        for (int i = 0; i < 256; ++i) {
            info.colors[i] = {static_cast<BYTE>(i), static_cast<BYTE>(i), static_cast<BYTE>(i), 0};
        }
    }
    void stretch(HDC dc, double scale) const {
        StretchDIBits(dc, 0, 0, std::lround(width * scale), std::lround(height * scale), 0, 0, width, height,
                      pixels.data(), reinterpret_cast<const BITMAPINFO*>(&info), DIB_RGB_COLORS, SRCCOPY);
        GdiFlush();
    }

    long width;
    long height;
    std::vector<std::uint8_t> pixels;
    struct {
        BITMAPINFOHEADER header;
        RGBQUAD colors[256];
    } info{};
};
void gdiCalls() {
    const TestWindow window(64, 64, false);
    const auto engines = makeEngines(__uuidof(TalGDIRenderEngine), window.get(), viewWidth, viewHeight);
    const std::size_t bytes = 4 * viewWidth * viewHeight;
    std::vector<std::uint8_t> from(bytes, 1), to(bytes, 2);
    const Work copy = [&] {
        copyBytes(to.data(), from.data(), bytes);
    };
    const auto draws = [&](const char* name, Kind kind, double scale, int method = 0) {
        setMethod(engines, method);
        const auto side = [scale](long view) {
            return static_cast<long>(std::ceil(view / scale));
        };
        const auto image = makeImage(kind, side(viewWidth), side(viewHeight));
        for (const Engine& engine : engines) {
            engine->put_VisiblePixelMaskEnable(kind == Kind::maskedRange ? VARIANT_TRUE : VARIANT_FALSE);
        }
        row(name, copy, onAll(engines, drawing(image, scale)));
    };
    row("(setting the view's pixels)", copy, {[&] {
            setBytes(to.data(), bytes);
        }});
    draws("8-bit grey 1:1", Kind::grey8, 1);
    draws("16-bit grey 1:1", Kind::grey16, 1);
    draws("range 1:1", Kind::range, 1);
    draws("range 1:1 with mask", Kind::maskedRange, 1);
    draws("colour 1:1", Kind::color, 1);
    draws("8-bit grey x 2.5 nearest", Kind::grey8, 2.5);
    draws("8-bit grey x 3 nearest", Kind::grey8, 3);
    draws("8-bit grey x 2.5 centre", Kind::grey8, 2.5, 1);
    draws("8-bit grey x 0.37", Kind::grey8, 0.37);
    draws("16-bit grey x 2.5", Kind::grey16, 2.5);
    draws("colour x 2.5", Kind::color, 2.5);
    const auto icon = makeImage(Kind::grey8, viewWidth, viewHeight);
    IconMaps opaque([](int) { return 0; }), some([](int) { return 30; }),
        every([](int i) { return i % 101; });
    row("icon over the whole view, opaque", copy, onAll(engines, drawingIcon(icon, opaque)));
    row("icon over the whole view, 30 %", copy, onAll(engines, drawingIcon(icon, some)));
    row("icon over the whole view, every weight", copy, onAll(engines, drawingIcon(icon, every)));
    row("Fill of the view", copy, onAll(engines, [](ITalRenderEngine2* engine) {
            engine->Fill(0, least, least, most, most, RGB(10, 20, 30));
        }));
    __int64 dc = 0;
    engines[0]->GetDrawContext(0, &dc);
    const GdiPicture whole(viewWidth, viewHeight), part(768, 432);
    row("peer: StretchDIBits 1:1, x 2.5", copy,
        {[&] { whole.stretch(reinterpret_cast<HDC>(dc), 1); },
         [&] {
             part.stretch(reinterpret_cast<HDC>(dc), 2.5);
         }});
    engines[0]->ReleaseDrawContext(0, dc);
}

// Small drawings, in units of copying 16 KiB.
void smallCalls() {
    const TestWindow window(64, 64, false);
    const auto engines = makeEngines(__uuidof(TalGDIRenderEngine), window.get(), viewWidth, viewHeight);
    std::vector<std::uint8_t> from(16384, 1), to(16384, 2);
    const auto icon = makeImage(Kind::grey8, viewWidth, viewHeight);
    const auto small = makeImage(Kind::grey8, 32, 32);
    IconMaps some([](int) { return 30; });
    const Work copy16K = [&] {
        copyBytes(to.data(), from.data(), 16384);
    };
    row("icon of 32 x 32, 30 %", copy16K, onAll(engines, drawingIcon(small, some)));
    row("clip of 16 x 16 at 1:1", copy16K, onAll(engines, drawing(icon, 1, {100, 100, 116, 116})));
    row("clip of 16 x 16 at x 2.5", copy16K, onAll(engines, drawing(icon, 2.5, {100, 100, 116, 116})));
    row("creating a talxstd image alone", copy16K, {[] {
            ComPtr<ITalImageMemory> memory;
            CoCreateInstance(__uuidof(TalImage8Grey), nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&memory));
        }});
    const auto huge = makeImage(Kind::grey8, 16384, 16384), little = makeImage(Kind::grey8, 256, 256);
    const RECT clip{100, 100, 164, 164};
    row("clip of 64 x 64 of 256 x 256, x 1.5", copy16K, onAll(engines, drawing(little, 1.5, clip)));
    row("clip of 64 x 64 of 16384 x 16384, x 1.5", copy16K, onAll(engines, drawing(huge, 1.5, clip)));
}

// A live picture of 1000 x 700, drawn and shown, beside GDI drawing it to the window itself.
void liveView() {
    constexpr long width = 1000, height = 700;
    const TestWindow window(width, height, true);
    const auto engines = makeEngines(__uuidof(TalGDIRenderEngine), window.get(), width, height);
    const HDC dc = GetDC(window.get());
    for (const double scale : {1.0, 2.5, 0.7}) {
        const auto side = [scale](long view) {
            return static_cast<long>(std::ceil(view / scale));
        };
        const auto image = makeImage(Kind::grey8, side(width), side(height));
        const GdiPicture picture(side(width), side(height));
        char name[64];
        std::snprintf(name, sizeof name, "live view x %.1f / StretchDIBits", scale);
        row(
            name, [&] { picture.stretch(dc, scale); }, onAll(engines, [&](ITalRenderEngine2* engine) {
                drawing(image, scale)(engine);
                engine->RefreshScreen(0, 0, 0, 0, width, height);
                GdiFlush();
            }));
        std::snprintf(name, sizeof name, "  of it RefreshScreen alone");
        row(
            name, [&] { picture.stretch(dc, scale); }, onAll(engines, [&](ITalRenderEngine2* engine) {
                engine->RefreshScreen(0, 0, 0, 0, width, height);
                GdiFlush();
            }));
    }
    ReleaseDC(window.get(), dc);
}
} // namespace

} // namespace talx::bench

int main(int argc, char** argv) {
    using namespace talx::bench;
    check(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), "CoInitializeEx");
    std::string only;
    ComPtr<IUnknown> registered; // keeps the registered DLL loaded
    check(CoCreateInstance(__uuidof(TalGDIRenderEngine), nullptr, CLSCTX_INPROC_SERVER,
                           IID_PPV_ARGS(&registered)),
          "creating the registered engine");
    modules.push_back(GetModuleHandleW(L"talxrend.dll"));
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc) {
            only = argv[++i];
            continue;
        }
        modules.push_back(LoadLibraryA(argv[i]));
        check(modules.back() ? S_OK : E_FAIL, argv[i]);
    }
    const std::pair<const char*, void (*)()> tables[] = {
        {"gdi", gdiCalls}, {"small", smallCalls}, {"live", liveView}, {"directdraw", directDrawCalls}};
    for (const auto& [name, table] : tables) {
        if (only.empty() || only == name) {
            std::printf("\n%-44s %10s %8s%s\n", name, "unit us", "engine",
                        modules.size() > 1 ? "   other" : "");
            table();
        }
    }
    return 0;
}
