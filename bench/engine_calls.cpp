// See engine_calls.h.
#include "bench/engine_calls.h"

#include "talxstd.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace talx::bench {

namespace {

// Seconds that a call takes: as many calls as make a measurable time, at least one.
double seconds(const Work& work, int calls) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) {
        work();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / calls;
}

int callsFor(const Work& work, double duration) {
    work();
    const double once = std::max(seconds(work, 1), 1e-7);
    return static_cast<int>(std::clamp(duration / once, 1.0, 4000.0));
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

} // namespace

void check(HRESULT hr, const char* what) {
    if (FAILED(hr)) {
        std::fprintf(stderr, "%s failed: %08lx\n", what, static_cast<unsigned long>(hr));
        std::exit(1);
    }
}
void row(const std::string& name, const Work& unit, std::vector<Work> works, const Pace& pace) {
    works.insert(works.begin(), unit);
    std::vector<int> calls;
    for (const Work& work : works) {
        calls.push_back(callsFor(work, pace.duration));
    }
    std::vector<std::vector<double>> times(works.size()), ratios(works.size());
    for (int round = 0; round < pace.rounds; ++round) {
        for (std::size_t i = 0; i < works.size(); ++i) {
            if (pace.rest) {
                Sleep(pace.rest);
                works[i]();
            }
            times[i].push_back(seconds(works[i], calls[i]));
            ratios[i].push_back(times[i].back() / times[0].back());
        }
    }
    std::printf("%-44s %10.1f", name.c_str(), median(times[0]) * 1e6);
    for (std::size_t i = 1; i < works.size(); ++i) {
        std::printf(" %8.2f", median(ratios[i]));
    }
    std::printf("\n");
    std::fflush(stdout);
}

ComPtr<ITalImage> makeImage(Kind kind, long width, long height) {
    const CLSID& clsid = kind == Kind::grey8    ? __uuidof(TalImage8Grey)
                         : kind == Kind::grey16 ? __uuidof(TalImage16Grey)
                         : kind == Kind::color  ? __uuidof(TalImageColor)
                                                : __uuidof(TalImage16Range);
    ComPtr<ITalImageMemory> memory;
    check(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&memory)), "creating an image");
    const long planes = kind == Kind::color ? 3 : kind == Kind::maskedRange ? 2 : 1;
    check(memory->Allocate(width, height, planes), "Allocate");
    std::minstd_rand random(1);
    for (long plane = 0; plane < planes; ++plane) {
        ComPtr<ITalPelAccess> access;
        check(memory->CreatePlaneAccess(plane, talPelAccessWrite, &access), "CreatePlaneAccess");
        __int64 data = 0;
        long stride = 0;
        access->get_Data(&data);
        access->get_RowStride(&stride);
        const bool wide = kind != Kind::grey8 && kind != Kind::color && plane == 0;
        for (long y = 0; y < height; ++y) {
            auto* bytes = reinterpret_cast<std::uint8_t*>(data) + static_cast<std::ptrdiff_t>(y) * stride;
            for (long x = 0; x < width; ++x) { // a smooth picture with some noise
                const double wave = 0.5 + 0.4 * std::sin(x * 0.01 + plane) * std::cos(y * 0.013);
                const double value = wave + (random() % 1000) * 2e-5;
                if (wide) {
                    reinterpret_cast<std::uint16_t*>(bytes)[x] = static_cast<std::uint16_t>(value * 65535);
                } else {
                    bytes[x] = static_cast<std::uint8_t>(kind == Kind::maskedRange ? random() % 8 != 0
                                                                                   : value * 255);
                }
            }
        }
        access->Unlock();
    }
    ComPtr<ITalImage> image;
    check(memory.As(&image), "ITalImage");
    return image;
}

IconMaps::IconMaps(const std::function<int(int)>& transparency)
    : colors(SafeArrayCreateVector(VT_I4, 0, 256)), transparencies(SafeArrayCreateVector(VT_UI1, 0, 256)) {
    for (int i = 0; i < 256; ++i) {
        static_cast<std::uint32_t*>(colors->pvData)[i] = static_cast<std::uint32_t>(i) * 0x010203 & 0xFFFFFF;
        static_cast<std::uint8_t*>(transparencies->pvData)[i] = static_cast<std::uint8_t>(transparency(i));
    }
}

IconMaps::~IconMaps() {
    SafeArrayDestroy(colors);
    SafeArrayDestroy(transparencies);
}

TestWindow::TestWindow(long width, long height, bool shown)
    : window_(CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, L"STATIC", L"", WS_POPUP, 8, 8, width,
                              height, nullptr, nullptr, nullptr, nullptr)) {
    if (shown) {
        ShowWindow(window_, SW_SHOWNA);
        UpdateWindow(window_);
        for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
            DispatchMessageW(&message);
        }
    }
}

std::vector<HMODULE> modules;

std::vector<Engine> makeEngines(const CLSID& clsid, HWND window, long width, long height) {
    std::vector<Engine> engines;
    for (const HMODULE module : modules) {
        const auto get = reinterpret_cast<decltype(&DllGetClassObject)>(
            reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
        ComPtr<IClassFactory> factory;
        Engine engine;
        check(get(clsid, IID_PPV_ARGS(&factory)), "DllGetClassObject");
        check(factory->CreateInstance(nullptr, IID_PPV_ARGS(&engine)), "CreateInstance");
        check(engine->Initialize(reinterpret_cast<INT_PTR>(window), width, height), "Initialize");
        engines.push_back(engine);
    }
    return engines;
}
std::vector<Work> onAll(const std::vector<Engine>& engines, const EngineCall& call) {
    std::vector<Work> works;
    for (const Engine& engine : engines) {
        works.push_back([=] { call(engine.Get()); });
    }
    return works;
}

EngineCall drawing(const ComPtr<ITalImage>& image, double scale, RECT clip) {
    return [=](ITalRenderEngine2* engine) {
        check(engine->DrawImage(0, image.Get(), 0, 0, scale, clip.left, clip.top, clip.right, clip.bottom, 0),
              "DrawImage");
    };
}

EngineCall drawingIcon(const ComPtr<ITalImage>& image, IconMaps& maps, long x, long y) {
    ComPtr<ITalImage8Grey> icon;
    check(image.As(&icon), "ITalImage8Grey");
    return [=, &maps](ITalRenderEngine2* engine) {
        check(engine->DrawIcon8(0, icon.Get(), &maps.colors, &maps.transparencies, static_cast<double>(x),
                                static_cast<double>(y), 1, least, least, most, most),
              "DrawIcon8");
    };
}

} // namespace talx::bench
