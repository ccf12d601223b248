// The viewer in this process: its window, the calls that it makes to its engine, and the pixels that it
// draws.
#pragma once

#include "tests/gdi/screen_format.h"

#include "viewer/commands.h"
#include "viewer/share/view_bitmap.h"
#include "viewer/viewer.h"

namespace talview::test {
using namespace talx::test;

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
    static_cast<void>(scene.takeComposed()); // which is on the screen already
}

// A file on this run's own drive, of a picture with pixels as grey as five times their row-major number.
inline std::wstring pictureFile(const wchar_t* path, int width, int height) {
    const TestContext memory(width, height);
    for (int i = 0; i < width * height; ++i) {
        SetPixelV(memory.dc, i % width, i / width, RGB(1, 1, 1) * (i * 5 & 0xFF));
    }
    talxrend::saveBitmap(memory.own, path);
    return path;
}

struct Shown {
    // The picture is there at once. Its corner lies at (20, 10) of 320 x 240 pixels.
    Shown(bool directDraw, const std::wstring& picture, const std::wstring& scale)
        : viewer(parseOptions({picture, L"--scale", scale, L"--size", L"320x240", L"--at", L"20,10",
                               L"--hold", L"0", L"--engine", directDraw ? L"directdraw" : L"gdi"})) {
        viewer.show(false);
    }
    ~Shown() { EXPECT_NO_THROW(viewer.run(0)) << "what a message has thrown"; }

    static void pump() {
        for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
            DispatchMessageW(&message);
        }
    }
    void send(UINT message, WPARAM wParam, LPARAM lParam) const {
        SendMessageW(window, message, wParam, lParam);
    }
    void command(int id) const { send(WM_COMMAND, id, 0); }

    Viewer viewer;
    const HWND window = viewer.window();
    Scene& scene() { return viewer.scene(); }
    View& view() { return scene().view(); }
};

} // namespace talview::test
