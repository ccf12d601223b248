// How the pixel formats of WIC lie in memory.
#pragma once

#include "viewer/files/raw_rows.h"

#include <wincodec.h>

#include <optional>

namespace talview {

// None for a format that only WIC itself can convert.
[[nodiscard]] std::optional<RawFormat> rawFormat(const GUID& format);

} // namespace talview
