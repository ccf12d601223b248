// Image files into pictures, through the system's own decoders.
#pragma once

#include "viewer/view/picture.h"

#include <string>

namespace talview {

// 8-bit grey, 16-bit grey or colour as the file is; transparency is dropped, only the first picture of a file
// is read. Throws Failure for a file that is missing or cannot be read.
[[nodiscard]] Picture loadImage(const std::wstring& path, int depth);

// A 16-bit grey file as a range image; with a mask unless maskPath is empty. Every pixel of the mask that is
// not black shows the value.
[[nodiscard]] Picture loadRangeImage(const std::wstring& path, const std::wstring& maskPath);

} // namespace talview
