// What the tables of whole calls are made of: timing in turns, images and icons, a window, the engines.
#pragma once

#include <windows.h>

#include "talxrend.h"

#include <oleauto.h>
#include <wrl/client.h>

#include <functional>
#include <string>
#include <vector>

namespace talx::bench {

using Microsoft::WRL::ComPtr;

constexpr long least = -0x7FFFFFFF - 1;
constexpr long most = 0x7FFFFFFF;

// Ends the program where a step fails.
void check(HRESULT hr, const char* what);

using Work = std::function<void()>;

struct Pace {
    int rounds = 21;
    double duration = 0.004; // seconds of one turn, or a single call
    DWORD rest = 0;          // milliseconds before each turn, and then a call that does not count
};

// A line of the table: the unit's microseconds and, for each piece of work, the median of its ratios to the
// unit.
void row(const std::string& name, const Work& unit, std::vector<Work> works, const Pace& pace = {});

// --- what is drawn

enum class Kind { grey8, grey16, range, maskedRange, color };

ComPtr<ITalImage> makeImage(Kind kind, long width, long height);

// The maps of an icon whose indices have these transparencies.
struct IconMaps {
    explicit IconMaps(const std::function<int(int)>& transparency);
    ~IconMaps();
    IconMaps(const IconMaps&) = delete;
    IconMaps& operator=(const IconMaps&) = delete;

    SAFEARRAY* colors;
    SAFEARRAY* transparencies;
};

// --- engines

class TestWindow {
public:
    TestWindow(long width, long height, bool shown);
    ~TestWindow() { DestroyWindow(window_); }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    [[nodiscard]] HWND get() const { return window_; }

private:
    HWND window_;
};

using Engine = ComPtr<ITalRenderEngine2>;
using EngineCall = std::function<void(ITalRenderEngine2*)>;

// The DLLs that are timed.
extern std::vector<HMODULE> modules;

// One engine of each of them.
std::vector<Engine> makeEngines(const CLSID& clsid, HWND window, long width, long height);

std::vector<Work> onAll(const std::vector<Engine>& engines, const EngineCall& call);

// Draws an image with its top left corner at (0, 0).
EngineCall drawing(const ComPtr<ITalImage>& image, double scale, RECT clip = {least, least, most, most});

// Draws an icon with its top left corner at (x, y).
EngineCall drawingIcon(const ComPtr<ITalImage>& image, IconMaps& maps, long x = 0, long y = 0);

// --- the tables

void directDrawCalls();

} // namespace talx::bench
