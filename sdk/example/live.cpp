// Shows the live pictures of a camera without copying them: each image wraps the buffer that the camera has
// filled, and the buffer goes back to the camera as soon as nothing shows it any more.
//
//     live [--gdi|--directdraw] [--save FILE]     --save writes what the window shows after ten pictures, and
//     leaves
#include <talxrend.hpp>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <thread>

namespace {

constexpr UINT pictureTaken = WM_APP;

// A camera of sorts: a thread that fills buffers of its own, three in all, and tells a window about each
// picture. While the window has not given any back, pictures are lost.
class Camera {
public:
    static constexpr SIZE size{320, 240};
    static constexpr long stride = 336; // bytes from row to row, as the camera's hardware likes it
    using Buffer = std::unique_ptr<std::vector<std::uint8_t>>;

    explicit Camera(HWND window)
        : thread_([this, window](const std::stop_token& stop) {
              for (long number = 0; !stop.stop_requested(); ++number) {
                  std::this_thread::sleep_for(std::chrono::milliseconds(20));
                  if (take(number)) {
                      PostMessageW(window, pictureTaken, 0, 0);
                  }
              }
          }) {}

    // The newest picture, once; null if there is none that nobody has had.
    Buffer newest() {
        const std::lock_guard lock(mutex_);
        return std::move(newest_);
    }

    void giveBack(Buffer buffer) {
        const std::lock_guard lock(mutex_);
        free_.push_back(std::move(buffer));
    }

private:
    bool take(long number) {
        const std::lock_guard lock(mutex_);
        if (newest_) {
            free_.push_back(std::move(newest_));
        }
        if (free_.empty()) {
            return false;
        }
        newest_ = std::move(free_.back());
        free_.pop_back();
        for (long y = 0; y < size.cy; ++y) {
            for (long x = 0; x < size.cx; ++x) {
                (*newest_)[y * stride + x] = static_cast<std::uint8_t>(x + y - 4 * number);
            }
        }
        return true;
    }

    static Buffer newBuffer() { return std::make_unique<Buffer::element_type>(size.cy * stride); }

    std::mutex mutex_;
    Buffer newest_;
    std::vector<Buffer> free_ = [] {
        std::vector<Buffer> buffers;
        std::generate_n(std::back_inserter(buffers), 3, newBuffer);
        return buffers;
    }();
    std::jthread thread_; // the last member: it stops first
};

class Viewer {
public:
    Viewer(HWND window, const CLSID& engineClass)
        : camera_(window),
          engine_(talxrend::create<ITalRenderEngine2>(engineClass), window, 1,
                  [this](long layer, const RECT& rect) {
                      engine_.fill(layer, rect, RGB(40, 44, 52));
                      engine_.drawImage(layer, image_.Get(), {20, 20}, 1, rect); // may be null
                  }) {
        engine_.update(engine_.extent());
    }

    void showNewest() {
        if (auto buffer = camera_.newest()) {
            const talxrend::Plane<std::uint8_t> pixels{buffer->data(), Camera::stride};
            image_ = talxrend::wrap8Grey(Camera::size, pixels,
                                         talxrend::keepAlive([this, held = std::move(buffer)]() mutable {
                                             camera_.giveBack(std::move(held));
                                         }));
            engine_.update(engine_.extent());
            engine_.show(engine_.extent());
            ++pictures_;
        }
    }

    LRESULT handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        switch (message) {
        case pictureTaken:
            showNewest();
            return 0;
        case WM_PAINT: {
            PAINTSTRUCT paint;
            BeginPaint(window, &paint);
            EndPaint(window, &paint);
            engine_.show(paint.rcPaint);
            return 0;
        }
        case WM_SIZE:
            if (engine_.resize()) {
                engine_.update(engine_.extent());
                InvalidateRect(window, nullptr, FALSE);
            }
            return 0;
        }
        return DefWindowProcW(window, message, wParam, lParam);
    }

    [[nodiscard]] const talxrend::Engine& engine() const { return engine_; }
    [[nodiscard]] long pictures() const { return pictures_; }

    talxrend::Guard failure;

private:
    Camera camera_; // outlives the image, which gives its buffer back
    talxrend::ComPtr<ITalImage8Grey> image_;
    talxrend::Engine engine_;
    long pictures_ = 0;
};

LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CLOSE) {
        PostQuitMessage(0);
        return 0;
    }
    auto* viewer = reinterpret_cast<Viewer*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return viewer ? viewer->failure.run([&] { return viewer->handle(window, message, wParam, lParam); })
                  : DefWindowProcW(window, message, wParam, lParam);
}

} // namespace

int main(int argc, char** argv) try {
    const talxrend::Apartment apartment;
    const bool directDraw = argc > 1 && std::string_view(argv[1]) == "--directdraw";
    const bool save = argc > 2 && std::string_view(argv[argc - 2]) == "--save";
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = windowProc;
    windowClass.lpszClassName = L"live";
    RegisterClassW(&windowClass);
    RECT frame{0, 0, 360, 280};
    AdjustWindowRect(&frame, WS_OVERLAPPEDWINDOW, FALSE);
    const HWND window =
        CreateWindowW(L"live", L"live", WS_OVERLAPPEDWINDOW, 100, 100, frame.right - frame.left,
                      frame.bottom - frame.top, nullptr, nullptr, nullptr, nullptr);
    Viewer viewer(window, directDraw ? __uuidof(TalRenderEngine) : __uuidof(TalGDIRenderEngine));
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&viewer));
    ShowWindow(window, SW_SHOWNORMAL);
    for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0; viewer.failure.rethrow()) {
        DispatchMessageW(&message);
        if (save && viewer.pictures() == 10) {
            talxrend::saveView(viewer.engine(), std::filesystem::path(argv[argc - 1]).wstring());
            break;
        }
    }
    SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "live: %s\n", error.what());
    return 1;
}
