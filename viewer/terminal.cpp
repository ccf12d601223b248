// Streams, the console of the program that started this one, and the box.
#include "viewer/terminal.h"

#include "viewer/view/failure.h"

#include <windows.h>

#include <cstdio>

namespace talview {
namespace {

bool isOpen(DWORD which) {
    const HANDLE stream = GetStdHandle(which);
    return stream && stream != INVALID_HANDLE_VALUE && GetFileType(stream) != FILE_TYPE_UNKNOWN;
}

// Only for this text: what else the program prints is for programs that read its output.
bool writeToParentsConsole(const std::wstring& text) {
    if (!AttachConsole(ATTACH_PARENT_PROCESS)) {
        return false;
    }
    const HANDLE console = CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_WRITE, nullptr,
                                       OPEN_EXISTING, 0, nullptr);
    DWORD written = 0;
    const bool isWritten =
        console != INVALID_HANDLE_VALUE &&
        WriteConsoleW(console, text.c_str(), static_cast<DWORD>(text.size()), &written, nullptr);
    if (console != INVALID_HANDLE_VALUE) {
        CloseHandle(console);
    }
    FreeConsole();
    return isWritten;
}

} // namespace

void tell(Output output, const std::string& text, bool mayShowBox) {
    const bool isError = output == Output::error;
    if (isOpen(isError ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE)) {
        std::FILE* stream = isError ? stderr : stdout;
        std::fputs(text.c_str(), stream);
        std::fflush(stream);
    } else if (!writeToParentsConsole(wide(text)) && mayShowBox) {
        MessageBoxW(nullptr, wide(text).c_str(), L"talview",
                    MB_OK | (isError ? MB_ICONERROR : MB_ICONINFORMATION));
    }
}

} // namespace talview
