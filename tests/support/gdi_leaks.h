// Finds GDI objects that the engine makes and does not delete, and deletes twice or without having made them.
#pragma once

#include "tests/support/module.h"

#include "tests/support/import_hook.h"

#include <olectl.h>

#include <set>

namespace talx::test {

// Watches talxrend.dll from its construction to its destruction, at which nothing may be left.
class GdiLeakCheck {
public:
    ~GdiLeakCheck() { EXPECT_EQ(0u, live()) << "GDI objects or window contexts were not given back"; }

    [[nodiscard]] std::size_t live() const { return objects_.size() + windowContexts_.size(); }
    // Calls that made something: a check that saw none has proved nothing.
    [[nodiscard]] int made() const { return made_; }

private:
    using Handles = std::multiset<void*>;

    template <FunctionName name, class Function>
    struct Maker {
        Maker(GdiLeakCheck& check, Handles& handles)
            : hook(engineModule(), [&check, &handles, this](auto... args) {
                  auto handle = hook.original(args...);
                  if (handle) {
                      handles.insert(handle);
                      ++check.made_;
                  }
                  return handle;
              }) {}
        ImportHook<name, Function> hook;
    };

    static void remove(Handles& handles, void* handle) {
        const auto found = handles.find(handle);
        if (found == handles.end()) {
            ADD_FAILURE() << "given back without having been made: " << handle;
        } else {
            handles.erase(found);
        }
    }

    int made_ = 0;
    Handles objects_, windowContexts_;

    Maker<HOOK(CreateCompatibleDC)> compatibleDc_{*this, objects_};
    Maker<HOOK(CreateCompatibleBitmap)> compatibleBitmap_{*this, objects_};
    Maker<HOOK(CreateDIBSection)> dibSection_{*this, objects_};
    Maker<HOOK(CreatePalette)> palette_{*this, objects_};
    Maker<HOOK(CreateSolidBrush)> solidBrush_{*this, objects_};
    Maker<HOOK(GetDC)> windowContext_{*this, windowContexts_};
    ImportHook<HOOK(DeleteDC)> deleteDc_{engineModule(), [this](HDC dc) {
                                             remove(objects_, dc);
                                             return deleteDc_.original(dc);
                                         }};
    ImportHook<HOOK(DeleteObject)> deleteObject_{engineModule(), [this](HGDIOBJ object) {
                                                     remove(objects_, object);
                                                     return deleteObject_.original(object);
                                                 }};
    ImportHook<HOOK(ReleaseDC)> releaseDc_{engineModule(), [this](HWND window, HDC dc) {
                                               remove(windowContexts_, dc);
                                               return releaseDc_.original(window, dc);
                                           }};
    // A picture that owns its bitmap deletes it itself.
    ImportHook<HOOK(OleCreatePictureIndirect)> picture_{
        engineModule(), [this](PICTDESC* description, REFIID iid, WINBOOL own, void** object) {
            const HRESULT hr = picture_.original(description, iid, own, object);
            if (SUCCEEDED(hr) && own) {
                remove(objects_, description->bmp.hbitmap);
            }
            return hr;
        }};
};

} // namespace talx::test
