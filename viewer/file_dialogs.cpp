// The common dialogs.
#include "viewer/file_dialogs.h"

#include "viewer/files/folder.h"

#include <commdlg.h>

namespace talview {
namespace {

constexpr std::size_t longestPath = 32768;
const std::wstring nul(1, L'\0');

std::wstring ask(BOOL(WINAPI* dialog)(OPENFILENAMEW*), HWND owner, const std::wstring& file,
                 const wchar_t* filter, DWORD flags) {
    std::wstring path(longestPath, L'\0');
    const std::wstring folder = wholeFolder(file);
    OPENFILENAMEW asked{};
    asked.lStructSize = sizeof asked;
    asked.hwndOwner = owner;
    asked.lpstrFilter = filter;
    asked.lpstrFile = path.data();
    asked.lpstrInitialDir = folder.c_str();
    asked.nMaxFile = static_cast<DWORD>(path.size());
    asked.lpstrDefExt = L"png";
    asked.Flags = OFN_HIDEREADONLY | OFN_NOCHANGEDIR | flags;
    return dialog(&asked) ? path.c_str() : L"";
}

// Such as *.png;*.bmp.
std::wstring allPictures() {
    std::wstring patterns;
    for (const wchar_t* ending : pictureEndings) {
        patterns += (patterns.empty() ? L"*" : L";*") + std::wstring(ending);
    }
    return patterns;
}

} // namespace

std::wstring wholeFolder(const std::wstring& file) {
    std::wstring folder(longestPath, L'\0');
    const std::wstring from = L".\\" + file;
    const bool isWhole =
        file.find(L':') != std::wstring::npos || file.starts_with(L'\\') || file.starts_with(L'/');
    folder.resize(GetFullPathNameW((isWhole ? file : from).c_str(), static_cast<DWORD>(folder.size()),
                                   folder.data(), nullptr));
    return folderOf(folder);
}

std::wstring askForPicture(HWND owner, const std::wstring& file) {
    return ask(GetOpenFileNameW, owner, file,
               (L"Pictures" + nul + allPictures() + nul + L"All files" + nul + L"*.*" + nul).c_str(),
               OFN_FILEMUSTEXIST);
}

std::wstring askForSaveName(HWND owner, const std::wstring& file) {
    return ask(GetSaveFileNameW, owner, file,
               L"PNG\0*.png\0JPEG\0*.jpg;*.jpeg\0BMP\0*.bmp\0TIFF\0*.tif;*.tiff\0",
               OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST);
}

} // namespace talview
