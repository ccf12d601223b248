// The smallest complete owner of a render engine: a window that shows an image in the owner's own memory.
//
//     owner [--gdi|--directdraw] [--save FILE]     --save writes what the window shows, and leaves
#include <talxrend.hpp>

#include <cstdio>
#include <filesystem>

namespace {

talxrend::Guard failure;               // no exception may pass through a window procedure
const talxrend::Engine* own = nullptr; // what the window shows, while it is there

struct Shown {
    explicit Shown(const talxrend::Engine& engine) { own = &engine; }
    ~Shown() { own = nullptr; }
};

LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (own && message == WM_PAINT) {
        PAINTSTRUCT paint;
        BeginPaint(window, &paint);
        EndPaint(window, &paint);
        failure.run([&] { own->show(paint.rcPaint); });
    } else if (own && message == WM_SIZE) {
        failure.run([&] {
            if (own->resize()) {
                own->update(own->extent());
                InvalidateRect(window, nullptr, FALSE);
            }
        });
    } else if (message == WM_CLOSE) {
        PostQuitMessage(0);
    } else {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) try {
    const talxrend::Apartment apartment;
    const bool directDraw = argc > 1 && std::string_view(argv[1]) == "--directdraw";
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = windowProc;
    windowClass.lpszClassName = L"owner";
    RegisterClassW(&windowClass);
    RECT frame{0, 0, 360, 280};
    AdjustWindowRect(&frame, WS_OVERLAPPEDWINDOW, FALSE);
    const HWND window =
        CreateWindowW(L"owner", L"owner", WS_OVERLAPPEDWINDOW, 100, 100, frame.right - frame.left,
                      frame.bottom - frame.top, nullptr, nullptr, nullptr, nullptr);

    constexpr long width = 160;
    std::vector<std::uint8_t> pixels(width * 120);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::uint8_t>(i % width + i / width);
    }
    const auto image = talxrend::wrap8Grey({width, 120}, {pixels.data(), width});

    talxrend::Engine engine(talxrend::create<ITalRenderEngine2>(directDraw ? __uuidof(TalRenderEngine)
                                                                           : __uuidof(TalGDIRenderEngine)),
                            window, 1, [&](long layer, const RECT& rect) {
                                engine.fill(layer, rect, RGB(40, 44, 52));
                                engine.drawImage(layer, image.Get(), {20, 20}, 2, rect);
                            });
    engine.update(engine.extent());
    const Shown shown(engine);
    ShowWindow(window, SW_SHOWNORMAL);
    UpdateWindow(window);
    if (argc > 2 && std::string_view(argv[argc - 2]) == "--save") {
        talxrend::saveView(engine, std::filesystem::path(argv[argc - 1]).wstring());
        PostQuitMessage(0);
    }
    for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0; failure.rethrow()) {
        DispatchMessageW(&message);
    }
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "owner: %s\n", error.what());
    return 1;
}
