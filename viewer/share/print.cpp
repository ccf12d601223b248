// The dialog, the page, and the place on it.
#include "viewer/share/print.h"

#include "viewer/share/global_memory.h"
#include "viewer/share/view_bitmap.h"
#include "viewer/view/failure.h"

#include <commdlg.h>
#include <winspool.h>

#include <algorithm>
#include <cmath>

namespace talview {
namespace {

// A device context's state for the length of a scope.
class SavedContext {
public:
    explicit SavedContext(HDC dc) : dc_(dc), saved_(SaveDC(dc)) {}
    ~SavedContext() { RestoreDC(dc_, saved_); }
    SavedContext(const SavedContext&) = delete;
    SavedContext& operator=(const SavedContext&) = delete;

private:
    HDC dc_;
    int saved_;
};

// A document of one page, which is thrown away unless it is finished.
class Document {
public:
    Document(HDC printer, const std::wstring& title) : printer_(printer) {
        DOCINFOW info{};
        info.cbSize = sizeof info;
        info.lpszDocName = title.c_str();
        require(StartDocW(printer, &info));
        isOpen_ = true;
    }
    ~Document() {
        if (isOpen_) {
            AbortDoc(printer_);
        }
    }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    void beginPage() const { require(StartPage(printer_)); }
    void finish() {
        require(EndPage(printer_));
        require(EndDoc(printer_));
        isOpen_ = false;
    }

private:
    static void require(int answer) {
        if (answer <= 0) {
            throw talxrend::Failure(HRESULT_FROM_WIN32(GetLastError()), "cannot print");
        }
    }

    HDC printer_;
    bool isOpen_ = false;
};

// The dialog says that there is none in a box of its own, so it is not asked.
bool isThereAPrinter() {
    DWORD bytes = 0;
    DWORD count = 0;
    EnumPrintersW(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, 4, nullptr, 0, &bytes, &count);
    return bytes != 0;
}

// The chosen printer; null if the person has chosen none.
talxrend::GdiOwner<HDC> askForPrinter(HWND owner) {
    if (!isThereAPrinter()) {
        throw Failure("there is no printer");
    }
    PRINTDLGW asked{};
    asked.lStructSize = sizeof asked;
    asked.hwndOwner = owner;
    asked.Flags = PD_RETURNDC | PD_NOSELECTION | PD_NOPAGENUMS | PD_USEDEVMODECOPIESANDCOLLATE;
    const bool isChosen = PrintDlgW(&asked);
    talxrend::GdiOwner<HDC> printer(asked.hDC);
    const GlobalMemory mode(asked.hDevMode);
    const GlobalMemory names(asked.hDevNames);
    const DWORD error = isChosen ? 0 : CommDlgExtendedError();
    if (error != 0 || (isChosen && !printer)) {
        throw Failure("cannot ask for a printer (error " + std::to_string(error) + ")");
    }
    return printer;
}

} // namespace

void print(HWND owner, const std::function<Scene&()>& scene, const std::wstring& title) {
    const auto printer = askForPrinter(owner);
    if (!printer) {
        return;
    }
    Document document(printer.get(), title);
    document.beginPage();
    printTo(printer.get(),
            {0, 0, GetDeviceCaps(printer.get(), HORZRES), GetDeviceCaps(printer.get(), VERTRES)}, scene());
    document.finish();
}

void printTo(HDC page, const RECT& area, Scene& scene) {
    scene.compose();
    const RECT view = scene.extent();
    // Dots for each pixel; fewer upwards than sideways where they lie less close.
    const double shape =
        static_cast<double>(GetDeviceCaps(page, LOGPIXELSY)) / std::max(1, GetDeviceCaps(page, LOGPIXELSX));
    const double width = area.right - area.left;
    const double height = area.bottom - area.top;
    const double dots = std::min(width / view.right, height / (view.bottom * shape));
    const int dotsWide = std::max(1, static_cast<int>(view.right * dots));
    const int dotsHigh = std::max(1, static_cast<int>(view.bottom * dots * shape));

    const SavedContext saved(page);
    SetMapMode(page, MM_ANISOTROPIC);
    SetWindowExtEx(page, view.right, view.bottom, nullptr);
    SetViewportExtEx(page, dotsWide, dotsHigh, nullptr);
    SetWindowOrgEx(page, 0, 0, nullptr);
    SetViewportOrgEx(page, area.left + static_cast<int>((width - dotsWide) / 2),
                     area.top + static_cast<int>((height - dotsHigh) / 2), nullptr);
    SetStretchBltMode(page, COLORONCOLOR);
    if (scene.engine().targets()) {
        const talxrend::RenderTarget target(scene.engine(), page);
        scene.refresh(view);
        return;
    }
    const auto bitmap = viewBitmap(scene);
    const talxrend::GdiOwner<HDC> dc(CreateCompatibleDC(nullptr));
    const talxrend::Selected selected(dc.get(), bitmap.get());
    if (!BitBlt(page, 0, 0, view.right, view.bottom, dc.get(), 0, 0, SRCCOPY)) {
        throw talxrend::Failure(HRESULT_FROM_WIN32(GetLastError()), "cannot print");
    }
}

} // namespace talview
