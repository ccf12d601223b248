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
                  if (auto buffer = unused()) {
                      fill(*buffer, number); // meanwhile the window draws from others
                      publish(std::move(buffer));
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
    // A buffer to fill; at worst that of a picture which nobody has had, and null if there is none either.
    Buffer unused() {
        const std::lock_guard lock(mutex_);
        if (free_.empty()) {
            return std::move(newest_);
        }
        Buffer buffer = std::move(free_.back());
        free_.pop_back();
        return buffer;
    }

    static void fill(std::vector<std::uint8_t>& buffer, long number) {
        for (long y = 0; y < size.cy; ++y) {
            for (long x = 0; x < size.cx; ++x) {
                buffer[y * stride + x] = static_cast<std::uint8_t>(x + y - 4 * number);
            }
        }
    }

    void publish(Buffer buffer) {
        const std::lock_guard lock(mutex_);
        std::swap(newest_, buffer);
        if (buffer) {
            free_.push_back(std::move(buffer));
        }
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

// What the window shows: its window procedure finds this for as long as it is there.
class Viewer {
public:
    Viewer(HWND window, const CLSID& engineClass)
        : window_(window), camera_(window),
          engine_(talxrend::create<ITalRenderEngine2>(engineClass), window, 1,
                  [this](long layer, const RECT& rect) {
                      engine_.fill(layer, rect, RGB(40, 44, 52));
                      engine_.drawImage(layer, image_.Get(), {20, 20}, 1, rect); // may be null
                  }) {
        engine_.update(engine_.extent());
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    ~Viewer() { SetWindowLongPtrW(window_, GWLP_USERDATA, 0); }
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;

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

    LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam) {
        switch (message) {
        case pictureTaken:
            showNewest();
            return 0;
        case WM_PAINT: {
            PAINTSTRUCT paint;
            BeginPaint(window_, &paint);
            EndPaint(window_, &paint);
            engine_.show(paint.rcPaint);
            return 0;
        }
        case WM_SIZE:
            if (engine_.resize()) {
                engine_.update(engine_.extent());
                InvalidateRect(window_, nullptr, FALSE);
            }
            return 0;
        }
        return DefWindowProcW(window_, message, wParam, lParam);
    }

    [[nodiscard]] const talxrend::Engine& engine() const { return engine_; }
    [[nodiscard]] long pictures() const { return pictures_; }

    talxrend::Guard failure;

private:
    HWND window_;
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
    return viewer ? viewer->failure.run([&] { return viewer->handle(message, wParam, lParam); })
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
    ShowWindow(window, SW_SHOWNORMAL);
    for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0; viewer.failure.rethrow()) {
        DispatchMessageW(&message);
        if (save && viewer.pictures() == 10) {
            talxrend::saveView(viewer.engine(), std::filesystem::path(argv[argc - 1]).wstring());
            break;
        }
    }
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "live: %s\n", error.what());
    return 1;
}
