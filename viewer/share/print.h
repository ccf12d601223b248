// What a scene shows, on paper.
#pragma once

#include "viewer/scene/scene.h"

#include <functional>
#include <string>

namespace talview {

// Asks for a printer and prints a page. scene: the one to print, asked for when the dialogs are over, since
// whoever owns it may have got another one meanwhile. title: of the document. Nothing is printed if the
// person changes their mind. Throws talxrend::Failure, and Failure if there is no printer.
void print(HWND owner, const std::function<Scene&()>& scene, const std::wstring& title);

// Draws the whole view as large as it fits into the middle of an area of a printer's (or another) device
// context, in the context's pixels, which may be wider than high. The context's mapping mode is as before
// afterwards.
void printTo(HDC page, const RECT& area, Scene& scene);

} // namespace talview
