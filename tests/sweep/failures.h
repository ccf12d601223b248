// What may come of each failing call of the platform.
#pragma once

#include "tests/ddraw/fake_direct_draw.h"

namespace talx::test {

constexpr HRESULT busy = HRESULT_FROM_WIN32(ERROR_BUSY);
constexpr HRESULT noDisplay = FakeDisplay::failure;
constexpr HRESULT noContext = static_cast<HRESULT>(0x8004400E), noSection = static_cast<HRESULT>(0x8004400F);
constexpr const wchar_t *noContextText = L"Can't create a compatible device context.",
                        *noSectionText = L"Unable to create the requested DIB section.",
                        *noSurfaceText = L"Cannot create offscreen surface.",
                        *noPaletteText = L"Can't set the palette.",
                        *noDirectDrawText = L"Can't create DirectDraw object.";

// One way that a method may end. A call has as many rows as there are ways.
struct Failure {
    const char* call;              // a function, or the beginning of what the fake display records
    std::uintptr_t value = 0;      // what the failing call answers
    HRESULT result = S_OK;         // the method's; S_FALSE: the call decides nothing
    const wchar_t* text = nullptr; // null: the method's name
    const wchar_t* in = L"";       // the beginning of the methods' names
};

constexpr auto outOfMemory = static_cast<std::uintptr_t>(static_cast<DWORD>(E_OUTOFMEMORY));
constexpr auto otherFailure = static_cast<std::uintptr_t>(static_cast<DWORD>(busy));

inline const Failure failures[] = {
    {"malloc", 0, E_OUTOFMEMORY},
    {"calloc", 0, E_OUTOFMEMORY, L"There is no memory for Width x Height pels.", L"Allocate"},
    {"calloc", 0, E_OUTOFMEMORY},
    {"HeapAlloc", 0, E_OUTOFMEMORY},
    {"FlsSetValue", 0, E_OUTOFMEMORY},

    // Error information.
    {"CreateErrorInfo", outOfMemory, E_OUTOFMEMORY},
    {"ProgIDFromCLSID", outOfMemory, E_OUTOFMEMORY},
    {"SetErrorInfo", outOfMemory, E_OUTOFMEMORY},
    {"SysAllocStringLen", 0, S_FALSE},
    {"LoadStringW", 0, S_FALSE},

    {"CoCreateInstance", otherFailure, busy},
    {"CoInitializeEx", otherFailure, busy},
    {"LoadTypeLibEx", otherFailure, busy},
    {"RegisterTypeLib", otherFailure, busy},
    {"UnRegisterTypeLib", otherFailure, busy},
    {"GetModuleHandleW"}, // nothing is registered for a user
    {"GetProcAddress", 0, S_OK, nullptr, L"Dll"},
    {"GetProcAddress", 0, S_OK, nullptr, L"CreateInstance"},
    {"GetProcAddress", 0, HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY), noDirectDrawText, L"Initialize"},
    {"LoadLibraryExW", 0, S_OK, nullptr, L"CreateInstance"},
    {"LoadLibraryExW", 0, HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY), noDirectDrawText, L"Initialize"},
    {"GetModuleFileNameW", 0, HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY)},

    {"OleCreatePictureIndirect", otherFailure, busy},
    {"OleTranslateColor", otherFailure, busy, nullptr, L"DrawIcon8"},
    {"OleTranslateColor", otherFailure, E_INVALIDARG, L"Unable to translate color."},
    {"SafeArrayAccessData", otherFailure, busy, nullptr, L"get_"},
    {"SafeArrayAccessData", otherFailure, busy, nullptr, L"DrawIcon8"},
    {"SafeArrayAccessData", otherFailure, E_INVALIDARG, nullptr, L"put_"},
    {"SafeArrayCopy", otherFailure, busy},
    {"SafeArrayCreateVector", 0, E_OUTOFMEMORY},

    // What is drawn by GDI is not checked, nor are palettes.
    {"BitBlt"},
    {"CreatePalette"},
    {"CreateSolidBrush"},
    {"FillRect"},
    {"GdiFlush"},
    {"GetNearestPaletteIndex", CLR_INVALID},
    {"GetPaletteEntries"},
    {"GetStockObject"},
    {"GetSystemPaletteEntries"},
    {"RealizePalette", GDI_ERROR},
    {"SelectClipRgn"},
    {"SelectObject"},
    {"SelectObject", 0, noSection, noSectionText},
    {"SelectPalette"},
    {"SetDIBColorTable"},
    {"SetPaletteEntries"},
    {"UnrealizeObject"},
    {"GetDC"},
    {"GetDC", 0, noContext, noContextText},
    {"GetDC", 0, noSection, noSectionText},
    {"CreateCompatibleDC", 0, noContext, noContextText},
    {"CreateCompatibleBitmap", 0, noSection, noSectionText},
    {"GetDIBits"}, // the first time
    {"GetDIBits", 0, noSection, noSectionText},
    {"CreateDIBSection"}, // the first time
    {"CreateDIBSection", 0, noSection, noSectionText},
    {"GetObjectW"}, // the first time; no icon is drawn
    {"GetObjectW", 0, noSection, noSectionText},
    {"GetObjectW", 0, E_FAIL, nullptr, L"Draw"},

    // The display.
    {"DirectDrawCreate", 0, S_OK, nullptr, L"CreateInstance"},
    {"DirectDrawCreate", 0, noDisplay, noDirectDrawText},
    {"directdraw.QueryInterface"},
    {"directdraw.SetCooperativeLevel", 0, noDisplay, L"Cannot set cooperation level for DirectDraw."},
    {"directdraw.CreateSurface primary", 0, noDisplay, L"Cannot create primary surface."},
    {"primary.GetPixelFormat", 0, noDisplay, L"Can't get screen pixel format."},
    {"directdraw.CreateClipper", 0, noDisplay, L"Can't create clipper object."},
    {"clipper.SetHWnd", 0, noDisplay, L"Can't set DirectDraw clipper HWND."},
    {"directdraw.CreateSurface buffer", 0, noDisplay, noSurfaceText, L"Initialize"},
    {"directdraw.CreateSurface buffer", 0, S_OK, nullptr, L"SetExtent"},
    {"buffer.GetSurfaceDesc", 0, noDisplay, noSurfaceText, L"Initialize"},
    {"buffer.GetSurfaceDesc", 0, S_OK, nullptr, L"SetExtent"},
    {"buffer.GetSurfaceDesc", 0, S_OK, nullptr, L"DrawIcon8"},
    {"primary.SetClipper", 0, noDisplay, L"Cannot set clipper on primary surface."},
    {"directdraw.CreatePalette", 0, noDisplay, noPaletteText},
    {"primary.SetPalette", 0, noDisplay, noPaletteText},
    {"primary.Blt", 0, noDisplay, L"Surface Blt operation failed."},
    {"buffer.Blt", 0, noDisplay, L"Color fill Blt failed.", L"Fill"},
    {"buffer.Blt", 0, S_OK, nullptr, L"Initialize"},
    {"buffer.Blt", 0, S_OK, nullptr, L"SetExtent"},
    {"buffer.Blt", 0, S_OK, nullptr, L"DrawIcon8"},
    {"buffer.Restore"},
    {"primary.Restore"},
    {"buffer.GetDC", 0, noDisplay, L"Surface GetDC failed."},
    {"buffer.ReleaseDC", 0, E_FAIL, L"", L"ReleaseDrawContext"},
    {"buffer.ReleaseDC", 0, S_FALSE},
    {"buffer.Lock", 0, noDisplay},
    {"buffer.Unlock"},
    // Blending by Direct3D, for which there is a substitute.
    {"directdraw.CreateSurface saved"},
    {"directdraw.CreateSurface texture"},
    {"device."},
    {"direct3d."},
    {"handle."},
    {"saved."},
    {"texture."},
    {"viewport."},

    // The registrar.
    {"registrar.", otherFailure, busy},
};

// Calls that are not made to fail.
struct Exempt {
    const char *reason, *functions;
};
inline const Exempt exempt[] = {
    {"of the C and C++ run-time",
     " CloseHandle CreateEventA GetCurrentThreadId GetSystemTimeAsFileTime GetTickCount64 IsDBCSLeadByteEx "
     "InitializeCriticalSection LoadLibraryW MultiByteToWideChar RaiseException RtlCaptureContext "
     "RtlLookupFunctionEntry RtlUnwindEx RtlVirtualUnwind SetEvent Sleep TlsGetValue VirtualProtect "
     "VirtualQuery WaitForMultipleObjects WaitForSingleObject WideCharToMultiByte ___lc_codepage_func "
     "___mb_cur_max_func __iob_func _amsg_exit _close _errno _initterm _lock _read _unlock abort fputc fputs "
     "fwrite localeconv memchr memcmp memcpy memmove memset realloc strcmp strerror strlen strncmp vfprintf "
     "wcslen "},
    {"gives back what was got",
     " CoTaskMemFree CoUninitialize DeleteCriticalSection DeleteDC DeleteObject FlsFree FreeLibrary HeapFree "
     "LeaveCriticalSection LocalFree ReleaseDC ReleaseSRWLockExclusive SafeArrayDestroy "
     "SafeArrayUnaccessData SysFreeString free "},
    {"cannot fail with the arguments that it is given",
     " AcquireSRWLockExclusive EnterCriticalSection FlsGetValue GetLastError GetProcessHeap SafeArrayGetDim "
     "SafeArrayGetElemsize SafeArrayGetUBound SetLastError StringFromGUID2 SysStringLen "},
    {"called only as the DLL is loaded, before any call of it can be watched",
     " CompareStringOrdinal DisableThreadLibraryCalls FlsAlloc GetPrivateProfileStringW "
     "InitializeCriticalSectionAndSpinCount "},
};

} // namespace talx::test
