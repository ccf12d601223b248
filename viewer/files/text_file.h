// Small text files, whole.
#pragma once

#include <string>

namespace talview {

// Both throw talxrend::Failure that names the file, and the first one Failure for a file larger than 16 MiB.
[[nodiscard]] std::string readText(const std::wstring& path);
// A file of that name is replaced when the new one is whole.
void writeText(const std::wstring& path, const std::string& text);

} // namespace talview
