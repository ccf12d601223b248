// Finds what the engine gets from the platform and does not give back, and what it gives back twice or
// without having got it.
#pragma once

#include "tests/support/import_hook.h"
#include "tests/support/module.h"

#include <olectl.h>

#include <mutex>
#include <set>
#include <span>

namespace talx::test {

// What makes something, what takes it back, and as which of its arguments.
struct MakerAndTaker {
    const char *maker, *taker;
    int argument;
};
constexpr MakerAndTaker resources[] = {{"CreateCompatibleDC", "DeleteDC", 0},
                                       {"CreateCompatibleBitmap", "DeleteObject", 0},
                                       {"CreateDIBSection", "DeleteObject", 0},
                                       {"CreatePalette", "DeleteObject", 0},
                                       {"CreateSolidBrush", "DeleteObject", 0},
                                       {"CreateFontIndirectW", "DeleteObject", 0},
                                       {"GetDC", "ReleaseDC", 1},
                                       {"GetWindowDC", "ReleaseDC", 1},
                                       {"LoadLibraryExW", "FreeLibrary", 0},
                                       {"SafeArrayCreateVector", "SafeArrayDestroy", 0},
                                       {"SysAllocStringLen", "SysFreeString", 0},
                                       {"HeapAlloc", "HeapFree", 2},
                                       {"malloc", "free", 0},
                                       {"calloc", "free", 0}};
constexpr std::span gdiResources(resources, 8);

// Watches a module from its construction to its destruction, at which nothing may be left.
class LeakCheck {
public:
    LeakCheck(HMODULE module, std::span<const MakerAndTaker> pairs)
        : pairs_(pairs),
          gate_(
              entries(module), [](const ImportedCall&) { return std::nullopt; },
              [this](const ImportedCall& call, std::uintptr_t result) { track(call, result); }) {}
    ~LeakCheck() { EXPECT_EQ(0u, live()) << "of " << (live_.empty() ? "" : live_.begin()->first); }

    [[nodiscard]] std::size_t live() const { return live_.size(); }

private:
    [[nodiscard]] std::vector<Import> entries(HMODULE module) const {
        std::vector<Import> all = imports(module);
        std::erase_if(all, [this](const Import& import) {
            return import.function != "OleCreatePictureIndirect" &&
                   std::none_of(pairs_.begin(), pairs_.end(), [&](const MakerAndTaker& p) {
                       return import.function == p.maker || import.function == p.taker;
                   });
        });
        return all;
    }
    void track(const ImportedCall& call, std::uintptr_t result) {
        const std::scoped_lock lock(mutex_);
        for (const MakerAndTaker& p : pairs_) {
            if (call.function == p.maker && result) {
                live_.emplace(p.taker, reinterpret_cast<void*>(result));
            } else if (call.function == p.taker) {
                return remove(p.taker, call.arguments[p.argument]);
            }
        }
        // A picture that owns its bitmap deletes it itself.
        if (call.function == "OleCreatePictureIndirect" && SUCCEEDED(static_cast<HRESULT>(result))) {
            EXPECT_TRUE(call.arguments[2]);
            remove("DeleteObject", static_cast<PICTDESC*>(call.arguments[0])->bmp.hbitmap);
        }
    }
    void remove(const std::string& taker, void* handle) {
        const auto found = live_.find({taker, handle});
        if (found != live_.end()) {
            live_.erase(found);
        } else if (taker.starts_with("Delete") || taker == "ReleaseDC") {
            ADD_FAILURE() << taker << " of what was not got: " << handle;
        }
    }

    const std::span<const MakerAndTaker> pairs_;
    std::mutex mutex_;                                  // calls come from any thread
    std::multiset<std::pair<std::string, void*>> live_; // by what takes it
    ImportGate gate_;
};

struct GdiLeakCheck : LeakCheck {
    GdiLeakCheck() : LeakCheck(engineModule(), gdiResources) {}
};

} // namespace talx::test
