// Copies for other programs.
#pragma once

#include "viewer/scene/scene.h"

#include <string>

namespace talview {

// Each puts something in place of what the clipboard holds, in the name of a window. Throws talxrend::Failure
// if another program keeps the clipboard.

// What the scene shows, as a picture of 24-bit colour.
void copyView(HWND owner, Scene& scene);
void copyText(HWND owner, const std::wstring& text);

} // namespace talview
