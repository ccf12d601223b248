// Picture files in a folder, by name.
#pragma once

#include <string>
#include <vector>

namespace talview {

// The endings of picture files' names.
constexpr const wchar_t* pictureEndings[] = {L".png", L".bmp", L".tif", L".tiff", L".jpg", L".jpeg"};

// Of a file, with the separator behind it; empty for the current one.
[[nodiscard]] std::wstring folderOf(const std::wstring& path);
// Of a file, without its folder.
[[nodiscard]] std::wstring nameOf(const std::wstring& path);

[[nodiscard]] bool isFolder(const std::wstring& path);

// Paths of the files whose names end as those of pictures do, in the order of file managers: without regard
// to case, and numbers in names by their size. None if the folder cannot be read.
[[nodiscard]] std::vector<std::wstring> picturesIn(const std::wstring& folder);

// The picture so many steps behind (or before) a file in its folder, whether that is still there or not;
// empty beyond the last and the first.
[[nodiscard]] std::wstring neighbour(const std::wstring& file, int steps);

} // namespace talview
