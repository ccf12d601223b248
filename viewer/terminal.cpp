// Streams, the console of the program that started this one, and the box.
#include "viewer/terminal.h"

#include "viewer/files/handle.h"
#include "viewer/view/text.h"

#include <cstdio>

namespace talview {
namespace {

bool isOpen(DWORD which) {
    const HANDLE stream = GetStdHandle(which);
    return stream && stream != INVALID_HANDLE_VALUE && GetFileType(stream) != FILE_TYPE_UNKNOWN;
}

// The console of the program that started this one, if there is one, for the length of a scope. What else
// this program prints is for programs that read its output.
class ParentsConsole {
public:
    ParentsConsole() = default;
    ~ParentsConsole() {
        if (isAttached_) {
            FreeConsole();
        }
    }
    ParentsConsole(const ParentsConsole&) = delete;
    ParentsConsole& operator=(const ParentsConsole&) = delete;

    [[nodiscard]] bool write(const std::wstring& text) const {
        if (!isAttached_) {
            return false;
        }
        const Handle console = ownFile(CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_WRITE,
                                                   nullptr, OPEN_EXISTING, 0, nullptr));
        DWORD written = 0;
        return console &&
               WriteConsoleW(console.get(), text.c_str(), static_cast<DWORD>(text.size()), &written, nullptr);
    }

private:
    bool isAttached_ = AttachConsole(ATTACH_PARENT_PROCESS);
};

} // namespace

void tell(Output output, const std::string& text, bool mayShowBox) {
    const bool isError = output == Output::error;
    if (isOpen(isError ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE)) {
        std::FILE* stream = isError ? stderr : stdout;
        std::fputs(text.c_str(), stream);
        std::fflush(stream);
    } else if (!ParentsConsole().write(wide(text)) && mayShowBox) {
        MessageBoxW(nullptr, wide(text).c_str(), L"talview",
                    MB_OK | (isError ? MB_ICONERROR : MB_ICONINFORMATION));
    }
}

} // namespace talview
