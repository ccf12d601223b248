// An activation context by the file's name.
#include "viewer/classes_beside.h"

#include <talxrend.hpp>

#include <string>

namespace talview {

ClassesBeside::ClassesBeside() {
    std::wstring path(32768, L'\0'); // the longest that there are
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    path += L".manifest";
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        return;
    }
    const std::wstring folder = path.substr(0, path.find_last_of(L'\\'));
    ACTCTXW source{};
    source.cbSize = sizeof source;
    source.dwFlags = ACTCTX_FLAG_ASSEMBLY_DIRECTORY_VALID;
    source.lpSource = path.c_str();
    source.lpAssemblyDirectory = folder.c_str();
    context_ = CreateActCtxW(&source);
    if (context_ == INVALID_HANDLE_VALUE) {
        throw talxrend::Failure(HRESULT_FROM_WIN32(GetLastError()), "cannot use " + talxrend::utf8(path));
    }
    ActivateActCtx(context_, &cookie_);
}

ClassesBeside::~ClassesBeside() {
    if (context_ != INVALID_HANDLE_VALUE) {
        DeactivateActCtx(0, cookie_);
        ReleaseActCtx(context_);
    }
}

} // namespace talview
