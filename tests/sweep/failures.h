// What may come of each failing call of the platform.
#pragma once

#include "tests/ddraw/fake_direct_draw.h"

#include <sstream>

namespace talx::test {

// One way that a method may end when one of these calls fails. A call may be in several rows.
struct Failure {
    std::string calls;     // functions, or beginnings of what the fake display records, by commas
    HRESULT value, result; // what the call answers, and the method; S_FALSE: the call decides nothing
    std::wstring text{};   // empty: the method's name
    std::wstring in{};     // the beginning of the methods' names

    [[nodiscard]] bool isOf(const std::string& call) const {
        std::istringstream beginnings(calls);
        for (std::string beginning; std::getline(beginnings, beginning, ',');) {
            if (call.starts_with(beginning)) {
                return true;
            }
        }
        return false;
    }
};

constexpr HRESULT busy = HRESULT_FROM_WIN32(ERROR_BUSY),
                  lastError = HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY);
constexpr HRESULT noDisplay = FakeDisplay::failure;
constexpr HRESULT noContext = static_cast<HRESULT>(0x8004400E), noSection = static_cast<HRESULT>(0x8004400F);
constexpr const wchar_t *noContextText = L"Can't create a compatible device context.",
                        *noSectionText = L"Unable to create the requested DIB section.",
                        *noSurfaceText = L"Cannot create offscreen surface.",
                        *noPaletteText = L"Can't set the palette.",
                        *noDirectDrawText = L"Can't create DirectDraw object.";

inline const Failure failures[] = {
    {"malloc", 0, S_OK, L"", L"DrawIcon8"}, // the software blend needs none
    {"malloc,realloc,HeapAlloc,FlsSetValue,SafeArrayCreateVector", 0, E_OUTOFMEMORY},
    {"calloc", 0, E_OUTOFMEMORY, L"There is no memory for Width x Height pels.", L"Allocate"},
    {"calloc", 0, E_OUTOFMEMORY},
    {"CreateErrorInfo,ProgIDFromCLSID,SetErrorInfo", E_OUTOFMEMORY, E_OUTOFMEMORY},
    {"SysAllocStringLen,LoadStringW,buffer.ReleaseDC", 0, S_FALSE},
    {"CoCreateInstance,CoInitializeEx,LoadTypeLibEx,RegisterTypeLib,UnRegisterTypeLib", busy, busy},
    {"registrar.,OleCreatePictureIndirect,SafeArrayCopy", busy, busy},
    {"GetModuleFileNameW", 0, lastError},
    {"GetProcAddress", 0, S_OK, L"", L"Dll"},
    {"GetProcAddress,LoadLibraryExW,DirectDrawCreate", 0, S_OK, L"", L"CreateInstance"},
    {"GetProcAddress,LoadLibraryExW", 0, lastError, noDirectDrawText, L"Initialize"},
    {"OleTranslateColor", busy, busy, L"", L"DrawIcon8"},
    {"OleTranslateColor", busy, E_INVALIDARG, L"Unable to translate color."},
    {"SafeArrayAccessData", busy, busy, L"", L"get_"},
    {"SafeArrayAccessData", busy, busy, L"", L"DrawIcon8"},
    {"SafeArrayAccessData", busy, E_INVALIDARG, L"", L"put_"},
    {"GetDC,CreateCompatibleDC", 0, noContext, noContextText},
    {"GetDC,CreateCompatibleBitmap,GetDIBits,CreateDIBSection,GetObjectW,SelectObject", 0, noSection,
     noSectionText},
    {"DirectDrawCreate", 0, noDisplay, noDirectDrawText},
    {"directdraw.SetCooperativeLevel", 0, noDisplay, L"Cannot set cooperation level for DirectDraw."},
    {"directdraw.CreateSurface primary", 0, noDisplay, L"Cannot create primary surface."},
    {"primary.GetPixelFormat", 0, noDisplay, L"Can't get screen pixel format."},
    {"directdraw.CreateClipper", 0, noDisplay, L"Can't create clipper object."},
    {"clipper.SetHWnd", 0, noDisplay, L"Can't set DirectDraw clipper HWND."},
    {"directdraw.CreateSurface buffer,buffer.GetSurfaceDesc", 0, noDisplay, noSurfaceText, L"Initialize"},
    {"directdraw.CreateSurface buffer,buffer.GetSurfaceDesc,buffer.Blt", 0, S_OK, L"", L"SetExtent"},
    {"primary.SetClipper", 0, noDisplay, L"Cannot set clipper on primary surface."},
    {"directdraw.CreatePalette,primary.SetPalette", 0, noDisplay, noPaletteText},
    {"primary.Blt", 0, noDisplay, L"Surface Blt operation failed."},
    {"buffer.Blt", 0, noDisplay, L"Color fill Blt failed.", L"Fill"},
    {"buffer.Blt", 0, S_OK, L"", L"Initialize"},
    {"buffer.GetSurfaceDesc", 0, S_OK, L"", L"DrawIcon8"},
    {"buffer.GetDC", 0, noDisplay, L"Surface GetDC failed."},
    {"buffer.ReleaseDC", 0, E_FAIL, L"", L"ReleaseDrawContext"},
    {"buffer.Lock", 0, noDisplay},
    // The calls whose failure does not show: GDI's drawing and palettes, and Direct3D, for which there is
    // another way. Some of them matter elsewhere, or when they fail again.
    {"BitBlt,CreateDIBSection,CreatePalette,CreateSolidBrush,FillRect,GdiFlush,GetDC,GetDIBits", 0, S_OK},
    {"GetModuleHandleW,GetNearestPaletteIndex,GetObjectW,GetPaletteEntries,GetStockObject", 0, S_OK},
    {"GetSystemPaletteEntries,RealizePalette,SelectClipRgn,SelectObject,SelectPalette", 0, S_OK},
    {"SetDIBColorTable,SetPaletteEntries,UnrealizeObject", 0, S_OK},
    {"buffer.Restore,buffer.Unlock,primary.Restore,directdraw.QueryInterface,direct3d.", 0, S_OK},
    {"directdraw.CreateSurface texture,texture.", 0, S_OK},
    {"device.,handle.,viewport.", 0, S_OK}};

// Functions that are not made to fail:
inline const std::string exempt =
    // those that only the C and C++ run-time calls,
    " CloseHandle CreateEventA GetCurrentThreadId GetSystemTimeAsFileTime GetTickCount64 IsDBCSLeadByteEx "
    "InitializeCriticalSection LoadLibraryW MultiByteToWideChar RaiseException RtlCaptureContext "
    "RtlLookupFunctionEntry RtlUnwindEx RtlVirtualUnwind SetEvent Sleep TlsGetValue VirtualProtect "
    "VirtualQuery WaitForMultipleObjects WaitForSingleObject WideCharToMultiByte ___lc_codepage_func "
    "___mb_cur_max_func __iob_func _amsg_exit _close _errno _initterm _lock _read _unlock _write abort fputc "
    "fputs "
    "fwrite localeconv memchr memcmp memcpy memmove memset strcmp strerror strlen strncmp vfprintf "
    "wcslen "
    // those that give back what was got,
    "CoTaskMemFree CoUninitialize DeleteCriticalSection DeleteDC DeleteObject FlsFree FreeLibrary HeapFree "
    "LeaveCriticalSection LocalFree ReleaseDC ReleaseSRWLockExclusive SafeArrayDestroy SafeArrayUnaccessData "
    "SysFreeString free "
    // those that cannot fail with the arguments that they are given,
    "AcquireSRWLockExclusive EnterCriticalSection FlsGetValue GetLastError GetProcessHeap SafeArrayGetDim "
    "SafeArrayGetElemsize SafeArrayGetUBound SetLastError StringFromGUID2 SysStringLen "
    // and those called as the DLL is loaded, before its calls can be watched.
    "CompareStringOrdinal DisableThreadLibraryCalls FlsAlloc GetPrivateProfileStringW "
    "InitializeCriticalSectionAndSpinCount ";

inline bool isExempt(const std::string& function) {
    return exempt.find(" " + function + " ") != std::string::npos;
}

} // namespace talx::test
