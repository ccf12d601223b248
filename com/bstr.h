// An owned BSTR.
#pragma once

#include <comdef.h>

#include <string_view>

namespace talx {

class Bstr {
public:
    Bstr() = default;
    ~Bstr() { SysFreeString(text_); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;

    // Makes it the texts one after the other. Throws _com_error(E_OUTOFMEMORY).
    Bstr(std::initializer_list<std::wstring_view> parts) {
        std::size_t length = 0;
        for (const std::wstring_view part : parts) {
            length += part.size();
        }
        text_ = SysAllocStringLen(nullptr, static_cast<UINT>(length));
        if (!text_) {
            throw _com_error(E_OUTOFMEMORY);
        }
        wchar_t* end = text_;
        for (const std::wstring_view part : parts) {
            end += part.copy(end, part.size());
        }
    }

    // For a function that fills it; only while it is null.
    [[nodiscard]] BSTR* put() { return &text_; }
    [[nodiscard]] const wchar_t* c_str() const { return text_ ? text_ : L""; }
    [[nodiscard]] std::wstring_view view() const { return {c_str(), SysStringLen(text_)}; }

private:
    BSTR text_ = nullptr;
};

} // namespace talx
