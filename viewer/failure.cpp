// Failure codes into text.
#include "viewer/failure.h"

#include <windows.h>

#include <oleauto.h>
#include <wrl/client.h>

#include <cstdio>
#include <memory>

namespace talview {
namespace {

using Microsoft::WRL::ComPtr;

std::wstring errorInfoText() {
    ComPtr<IErrorInfo> info;
    BSTR text = nullptr;
    if (GetErrorInfo(0, &info) != S_OK || FAILED(info->GetDescription(&text)) || !text) {
        return {};
    }
    const std::unique_ptr<OLECHAR, decltype(&SysFreeString)> owned(text, SysFreeString);
    return text;
}

std::wstring systemText(HRESULT hr) {
    wchar_t text[512];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                                            FORMAT_MESSAGE_MAX_WIDTH_MASK,
                                        nullptr, static_cast<DWORD>(hr), 0, text, ARRAYSIZE(text), nullptr);
    return {text, length};
}

} // namespace

std::string utf8(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    std::string bytes(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr),
                      '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), static_cast<int>(bytes.size()),
                        nullptr, nullptr);
    return bytes;
}

void check(HRESULT hr, std::string_view what) {
    if (SUCCEEDED(hr)) {
        return;
    }
    std::wstring text = errorInfoText();
    if (text.empty()) {
        text = systemText(hr);
    }
    while (!text.empty() && (text.back() == L' ' || text.back() == L'.')) {
        text.pop_back();
    }
    char code[24];
    std::snprintf(code, sizeof code, " (0x%08lX)", static_cast<unsigned long>(hr));
    throw Failure(std::string(what) + (text.empty() ? "" : ": " + utf8(text)) + code);
}

void checkCreated(HRESULT hr, const std::string& dll) {
    check(hr, dll + " is not registered or cannot be loaded; run: regsvr32 " + dll);
}

} // namespace talview
