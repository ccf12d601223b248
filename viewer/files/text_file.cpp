// Reading and replacing.
#include "viewer/files/text_file.h"

#include "viewer/files/handle.h"
#include "viewer/view/failure.h"

#include <talxrend.hpp>

namespace talview {
namespace {

constexpr DWORD mostBytes = 16 << 20;

[[noreturn]] void throwLast(const std::string& what) {
    throw talxrend::Failure(HRESULT_FROM_WIN32(GetLastError()), what);
}

Handle open(const std::wstring& path, DWORD access, DWORD disposition, const std::string& what) {
    Handle file = ownFile(CreateFileW(path.c_str(), access, FILE_SHARE_READ, nullptr, disposition,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        throwLast(what);
    }
    return file;
}

void write(const std::wstring& path, const std::string& text, const std::string& what) {
    const Handle file = open(path, GENERIC_WRITE, CREATE_ALWAYS, what);
    DWORD written = 0;
    if (!WriteFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr)) {
        throwLast(what);
    }
}

} // namespace

std::string readText(const std::wstring& path) {
    const std::string what = "cannot read " + utf8(path);
    const Handle file = open(path, GENERIC_READ, OPEN_EXISTING, what);
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file.get(), &size)) {
        throwLast(what);
    }
    if (size.QuadPart > mostBytes) {
        throw Failure(what + ": it is too large");
    }
    std::string text(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD got = 0;
    if (!ReadFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &got, nullptr)) {
        throwLast(what);
    }
    text.resize(got);
    return text;
}

void writeText(const std::wstring& path, const std::string& text) {
    const std::string what = "cannot write " + utf8(path);
    const talxrend::NewFile file(path);
    write(file.path(), text, what);
    file.replace(what);
}

} // namespace talview
