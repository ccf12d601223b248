// The file.
#include "viewer/state_file.h"

#include "viewer/files/text_file.h"

#include <windows.h>

#include <stdexcept>

namespace talview {
namespace {

// makeFolders: those that are missing. Empty if the person has no application data.
std::wstring filePath(bool makeFolders) {
    std::wstring path(32768, L'\0');
    path.resize(GetEnvironmentVariableW(L"APPDATA", path.data(), static_cast<DWORD>(path.size())));
    if (path.empty()) {
        return path;
    }
    for (const wchar_t* folder : {L"\\Hemlar", L"\\talview"}) {
        path += folder;
        if (makeFolders) {
            CreateDirectoryW(path.c_str(), nullptr);
        }
    }
    return path + L"\\state.txt";
}

} // namespace

State readState() {
    try {
        return parseState(readText(filePath(false)));
    } catch (const std::runtime_error&) {
        return {};
    }
}

void writeState(const State& state) {
    try {
        writeText(filePath(true), formatState(state));
    } catch (const std::runtime_error&) {
        return;
    }
}

} // namespace talview
