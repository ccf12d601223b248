// An activation context by the file's name.
#include "viewer/classes_beside.h"

#include "viewer/view/text.h"

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
    const HANDLE context = CreateActCtxW(&source);
    context_.reset(context == INVALID_HANDLE_VALUE ? nullptr : context);
    if (!context_ || !ActivateActCtx(context_.get(), &cookie_)) {
        throw talxrend::Failure(HRESULT_FROM_WIN32(GetLastError()), "cannot use " + utf8(path));
    }
}

ClassesBeside::~ClassesBeside() {
    if (context_) {
        DeactivateActCtx(0, cookie_);
    }
}

} // namespace talview
