// An owned BSTR.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <initializer_list>
#include <string_view>

namespace talx {

class Bstr {
public:
    Bstr() = default;
    ~Bstr() { SysFreeString(text_); }
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;

    // Makes it the texts one after the other; null without the memory for them.
    Bstr(std::initializer_list<std::wstring_view> parts) noexcept {
        std::size_t length = 0;
        for (const std::wstring_view part : parts) {
            length += part.size();
        }
        text_ = SysAllocStringLen(nullptr, static_cast<UINT>(length));
        if (!text_) {
            return;
        }
        wchar_t* end = text_;
        for (const std::wstring_view part : parts) {
            end += part.copy(end, part.size());
        }
    }

    // For a function that fills it; only while it is null.
    [[nodiscard]] BSTR* put() { return &text_; }
    [[nodiscard]] explicit operator bool() const { return text_ != nullptr; }
    [[nodiscard]] const wchar_t* c_str() const { return text_ ? text_ : L""; }
    [[nodiscard]] std::wstring_view view() const { return {c_str(), SysStringLen(text_)}; }

private:
    BSTR text_ = nullptr;
};

} // namespace talx
