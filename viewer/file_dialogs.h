// The system's dialogs that ask for a file.
#pragma once

#include <windows.h>

#include <string>

namespace talview {

// Where a file lies, or would lie: a whole path with a separator at its end.
[[nodiscard]] std::wstring wholeFolder(const std::wstring& file);

// Begins in the folder of the file, or in the current one. Empty if the person has chosen none.
[[nodiscard]] std::wstring askForPicture(HWND owner, const std::wstring& file);

// Where to save a picture as PNG, JPEG, BMP or TIFF: begins in the folder of the file. The name gets the
// chosen ending if it has none. Empty if the person has chosen none.
[[nodiscard]] std::wstring askForSaveName(HWND owner, const std::wstring& file);

} // namespace talview
