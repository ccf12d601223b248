// The viewer in this process: its window, the calls that it makes to its engine, and the pixels that it
// draws.
#pragma once

#include "tests/gdi/screen_format.h"

#include "viewer/commands.h"
#include "viewer/share/view_bitmap.h"
#include "viewer/viewer.h"

namespace talview::test {

using namespace talx::test;

inline HMODULE program() {
    return GetModuleHandleW(nullptr);
}

// What the scene shows, in 24-bit colour, rows from the bottom.
inline std::string pixelsOf(Scene& scene) {
    const auto bitmap = viewBitmap(scene);
    const BITMAP memory = BitmapBits(bitmap.get()).section().dsBm;
    return {static_cast<char*>(memory.bmBits),
            static_cast<std::size_t>(memory.bmWidthBytes * memory.bmHeight)};
}

// What was drawn part by part is what drawing all of it gives.
inline void expectAsDrawnWhole(Scene& scene) {
    const std::string shown = pixelsOf(scene);
    scene.view().damage().addAll();
    EXPECT_TRUE(shown == pixelsOf(scene));
}

// A file on this run's own drive, of a picture that is grey by the row-major number of the pixel.
inline std::wstring pictureFile(const wchar_t* path, int width, int height) {
    const TestContext memory(width, height);
    for (int i = 0; i < width * height; ++i) {
        SetPixelV(memory.dc, i % width, i / width, RGB(1, 1, 1) * (i * 5 & 0xFF));
    }
    talxrend::saveBitmap(memory.own, path);
    return path;
}

struct Shown {
    Shown(bool directDraw, const std::wstring& picture, double scale) {
        Options options;
        options.image = picture;
        options.width = 320;
        options.height = 240;
        options.scale = scale;
        options.at = Point{20, 10};
        options.directDraw = directDraw;
        options.hold = 0; // the picture is there at once
        viewer.emplace(options);
        viewer->show(false);
        window = viewer->window();
    }
    ~Shown() { EXPECT_NO_THROW(viewer->run(0)) << "what a message has thrown"; }

    static void pump() {
        for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
            DispatchMessageW(&message);
        }
    }
    void send(UINT message, WPARAM wParam, int x = 0, int y = 0) const {
        SendMessageW(window, message, wParam, MAKELPARAM(x, y));
        pump();
    }
    void command(int id) const { send(WM_COMMAND, id); }
    void drag(UINT down, POINT from, POINT to) const {
        send(down, 0, from.x, from.y);
        send(WM_MOUSEMOVE, 0, to.x, to.y);
        send(down + 1, 0);
    }
    // With the shift key: adds a marker, or removes it.
    void mark(int x, int y) const { send(WM_LBUTTONDOWN, MK_SHIFT, x, y); }
    [[nodiscard]] Scene& scene() { return viewer->scene(); }
    [[nodiscard]] View& view() { return scene().view(); }

    std::optional<Viewer> viewer;
    HWND window = nullptr;
};

struct Call {
    std::string function;
    RECT rect;
};

// What is called of an engine with a rectangle, and how its device context is clipped.
class EngineCalls {
public:
    explicit EngineCalls(ITalRenderEngine2* engine) {
        using Engine = ITalRenderEngine2;
        std::vector<Import> entries = imports(program());
        std::erase_if(entries, [](const Import& import) { return import.function != "IntersectClipRect"; });
        const auto add = [&](const char* name, auto method, int firstSide) {
            std::size_t offset = 0; // and 1, in a pointer to a virtual function
            std::memcpy(&offset, &method, sizeof offset);
            entries.push_back({"", name, *reinterpret_cast<void***>(engine) + offset / sizeof(void*)});
            firstSide_[name] = firstSide;
        };
        add("BeginLayerUpdate", &Engine::BeginLayerUpdate, 2);
        add("EndLayerUpdate", &Engine::EndLayerUpdate, 2);
        add("Fill", &Engine::Fill, 2);
        add("DrawImage", &Engine::DrawImage, 6);
        add("DrawIcon8", &Engine::DrawIcon8, 8);
        add("RefreshScreen", &Engine::RefreshScreen, 3);
        gate_.emplace(entries, [this](const ImportedCall& call) {
            const auto* side = &call.arguments[firstSide_[call.function]];
            const auto at = [&](int i) {
                return static_cast<LONG>(reinterpret_cast<std::intptr_t>(side[i]));
            };
            calls_.push_back({call.function, {at(0), at(1), at(2), at(3)}});
            return std::nullopt;
        });
    }
    [[nodiscard]] std::vector<Call> take() { return std::exchange(calls_, {}); }

private:
    std::map<std::string, int> firstSide_{{"IntersectClipRect", 1}}; // its place among the arguments
    std::vector<Call> calls_;
    std::optional<ImportGate> gate_;
};

} // namespace talview::test
