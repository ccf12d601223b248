// Owners of GDI objects.
#pragma once

#include <windows.h>

#include <memory>
#include <type_traits>

namespace talview {

struct DeleteGdi {
    void operator()(HGDIOBJ object) const { DeleteObject(object); }
    void operator()(HDC dc) const { DeleteDC(dc); }
};

template <class Handle>
using GdiOwner = std::unique_ptr<std::remove_pointer_t<Handle>, DeleteGdi>;

// An object selected into a device context for a while.
class Selected {
public:
    Selected(HDC dc, HGDIOBJ object) : dc_(dc), before_(SelectObject(dc, object)) {}
    ~Selected() { SelectObject(dc_, before_); }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;

private:
    HDC dc_;
    HGDIOBJ before_;
};

} // namespace talview
