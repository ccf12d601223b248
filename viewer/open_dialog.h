// The system's dialog that asks for a picture file.
#pragma once

#include <windows.h>

#include <string>

namespace talview {

// Begins in the folder of the file, or in the current one. Empty if the person has chosen none.
[[nodiscard]] std::wstring askForPicture(HWND owner, const std::wstring& file);

} // namespace talview
