// The common dialog.
#include "viewer/open_dialog.h"

#include <commdlg.h>

namespace talview {

std::wstring askForPicture(HWND owner, const std::wstring& file) {
    std::wstring path(32768, L'\0'); // the longest that there are
    std::wstring folder = path;
    const std::wstring from = L".\\" + file;
    const bool isWhole =
        file.find(L':') != std::wstring::npos || file.starts_with(L'\\') || file.starts_with(L'/');
    folder.resize(GetFullPathNameW((isWhole ? file : from).c_str(), static_cast<DWORD>(folder.size()),
                                   folder.data(), nullptr));
    folder.resize(folder.find_last_of(L'\\') + 1);
    OPENFILENAMEW asked{};
    asked.lStructSize = sizeof asked;
    asked.hwndOwner = owner;
    asked.lpstrFilter = L"Pictures\0*.png;*.bmp;*.tif;*.tiff;*.jpg;*.jpeg\0All files\0*.*\0";
    asked.lpstrFile = path.data();
    asked.lpstrInitialDir = folder.c_str();
    asked.nMaxFile = static_cast<DWORD>(path.size());
    asked.Flags = OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    return GetOpenFileNameW(&asked) ? path.c_str() : L"";
}

} // namespace talview
