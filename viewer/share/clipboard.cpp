// Memory that the clipboard takes over.
#include "viewer/share/clipboard.h"

#include "viewer/share/global_memory.h"
#include "viewer/share/view_bitmap.h"

#include <cstring>

namespace talview {
namespace {

// A block that the system can own.
class Shared {
public:
    explicit Shared(std::size_t size) : memory_(GlobalAlloc(GMEM_MOVEABLE, size)) {
        talxrend::check(memory_ ? S_OK : E_OUTOFMEMORY, "cannot copy");
    }

    void write(std::size_t at, const void* bytes, std::size_t size) const {
        void* const begin = GlobalLock(memory_.get());
        talxrend::check(begin ? S_OK : E_OUTOFMEMORY, "cannot copy");
        std::memcpy(static_cast<char*>(begin) + at, bytes, size);
        GlobalUnlock(memory_.get());
    }

    void giveToClipboard(HWND owner, UINT format) {
        const Clipboard clipboard(owner);
        if (!EmptyClipboard() || !SetClipboardData(format, memory_.get())) {
            throw talxrend::Failure(HRESULT_FROM_WIN32(GetLastError()), "cannot copy");
        }
        static_cast<void>(memory_.release()); // it is the clipboard's now
    }

private:
    class Clipboard {
    public:
        explicit Clipboard(HWND owner) {
            if (!OpenClipboard(owner)) {
                throw talxrend::Failure(HRESULT_FROM_WIN32(GetLastError()),
                                        "cannot copy while another program uses the clipboard");
            }
        }
        ~Clipboard() { CloseClipboard(); }
        Clipboard(const Clipboard&) = delete;
        Clipboard& operator=(const Clipboard&) = delete;
    };

    GlobalMemory memory_;
};

} // namespace

void copyView(HWND owner, Scene& scene) {
    const auto bitmap = viewBitmap(scene);
    DIBSECTION dib{};
    GetObjectW(bitmap.get(), sizeof dib, &dib);
    const std::size_t size = static_cast<std::size_t>(dib.dsBm.bmWidthBytes) * dib.dsBm.bmHeight;
    dib.dsBmih.biSizeImage = static_cast<DWORD>(size);
    Shared block(sizeof dib.dsBmih + size);
    block.write(0, &dib.dsBmih, sizeof dib.dsBmih);
    block.write(sizeof dib.dsBmih, dib.dsBm.bmBits, size);
    block.giveToClipboard(owner, CF_DIB);
}

void copyText(HWND owner, const std::wstring& text) {
    const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
    Shared block(size);
    block.write(0, text.c_str(), size);
    block.giveToClipboard(owner, CF_UNICODETEXT);
}

} // namespace talview
