// Listing and stepping.
#include "viewer/files/folder.h"

#include <windows.h>

#include <shlwapi.h>

#include <algorithm>
#include <memory>

namespace talview {
namespace {

// Some names that differ, such as 1 and 01, are the same to the first comparison.
bool isBefore(const std::wstring& one, const std::wstring& other) {
    const int order = StrCmpLogicalW(one.c_str(), other.c_str());
    return order < 0 ||
           (order == 0 && CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_LESS_THAN);
}

bool isPicture(const std::wstring& name) {
    const auto dot = name.find_last_of(L'.');
    const std::wstring ending = dot == std::wstring::npos ? L"" : name.substr(dot);
    return std::any_of(std::begin(pictureEndings), std::end(pictureEndings), [&](const wchar_t* each) {
        return CompareStringOrdinal(ending.c_str(), -1, each, -1, TRUE) == CSTR_EQUAL;
    });
}

struct CloseSearch {
    void operator()(HANDLE search) const { FindClose(search); }
};

} // namespace

std::wstring folderOf(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L"\\/:") + 1);
}

std::wstring nameOf(const std::wstring& path) {
    return path.substr(path.find_last_of(L"\\/:") + 1);
}

bool isFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

std::vector<std::wstring> picturesIn(const std::wstring& folder) {
    std::wstring prefix = folder;
    if (!prefix.empty() && prefix.find_last_of(L"\\/:") != prefix.size() - 1) {
        prefix += L'\\';
    }
    std::vector<std::wstring> paths;
    WIN32_FIND_DATAW found{};
    const HANDLE first = FindFirstFileW((prefix + L'*').c_str(), &found);
    if (first == INVALID_HANDLE_VALUE) {
        return paths;
    }
    const std::unique_ptr<void, CloseSearch> search(first);
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && isPicture(found.cFileName)) {
            paths.push_back(prefix + found.cFileName);
        }
    } while (FindNextFileW(search.get(), &found));
    std::sort(paths.begin(), paths.end(), isBefore);
    return paths;
}

std::wstring neighbour(const std::wstring& file, int steps) {
    const auto paths = picturesIn(folderOf(file));
    const auto at = std::lower_bound(paths.begin(), paths.end(), file, isBefore);
    // Where the file is gone, the one behind it stands in its place already.
    const bool isThere = at != paths.end() && !isBefore(file, *at);
    const auto index = at - paths.begin() + steps - (!isThere && steps > 0 ? 1 : 0);
    return index < 0 || index >= static_cast<std::ptrdiff_t>(paths.size()) ? L"" : paths[index];
}

} // namespace talview
