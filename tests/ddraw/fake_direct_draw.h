// A DirectDraw of the test's own, handed to the engine in the place of ddraw.dll's: with any pixel format,
// over memory that the test sees, failing and losing surfaces where the test wants, and keeping a record of
// every call.
#pragma once

#include "tests/support/import_hook.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <map>

namespace talx::test {

using Calls = std::vector<std::string>;

struct FakeDisplay;

// An object of the display. What a COM pointer to it points to is its first member, the table of its methods.
struct FakeObject {
    const void* methods;
    FakeDisplay& display;
    const std::string name;
    unsigned long references = 1;

    // Of surfaces. Pixels are little-endian numbers; nothing may write to the bytes after rows and after the
    // last row.
    bool lost = false;
    void* locked = nullptr; // what the last Lock answered
    int width = 0, height = 0, bytes = 0;
    std::vector<std::uint8_t> memory{};

    [[nodiscard]] int pitch() const { return width * bytes + 5; }
    [[nodiscard]] std::uint8_t* at(int x, int y) { return &memory.at(y * pitch() + x * bytes); }
    [[nodiscard]] std::uint32_t pixel(int x, int y) {
        std::uint32_t value = 0;
        std::memcpy(&value, at(x, y), bytes);
        return value;
    }
};

// While it lives, a copy of talxrend.dll finds this display. Its objects must be gone before it.
struct FakeDisplay {
    explicit FakeDisplay(HMODULE module);
    ~FakeDisplay() { EXPECT_EQ(0, objects) << "objects of the display are left"; }

    DWORD bits = 32;
    DWORD redMask = 0xFF0000;
    bool bornLost = false;    // new surfaces are lost
    std::string yieldNothing; // the object whose creation succeeds without yielding it
    std::array<int, 3>
        lie{}; // pixels that surfaces say to be narrower and lower, and the pitch that they state
    __int64 context = 0x5A5A; // what GetDC yields

    std::vector<FakeObject*> textures; // by their handles from 1 on
    DWORD texture = 0;                 // Direct3D's handle of the one in use
    RECT scene{};                      // what is drawn from it when the scene ends

    Calls refuse; // calls whose record begins with one of these fail
    std::function<bool(const std::string&)> fails = [](const std::string&) {
        return false;
    }; // this one too
    static constexpr HRESULT failure = static_cast<HRESULT>(0x887603E7);
    static constexpr HRESULT surfaceLost = static_cast<HRESULT>(0x887601C2); // of lost surfaces

    // What happened: "object.Method arguments" for calls, "~object" for the end of an object.
    Calls calls;
    Calls takeCalls() { return std::exchange(calls, {}); }
    [[nodiscard]] bool called(const std::string& beginning) const;

    std::map<std::string, FakeObject*>
        surfaces; // "primary" (without pixels), "buffer", "second" buffer, "texture"
    std::array<PALETTEENTRY, 256> palette{}; // of the last CreatePalette
    int objects = 0;

private:
    ImportHook<HOOK(GetProcAddress)> hook_;
};

} // namespace talx::test
