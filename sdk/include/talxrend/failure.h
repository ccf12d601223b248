// HRESULTs as exceptions, and exceptions kept out of code that must not see them.
#pragma once

#include <windows.h>

#include <oleauto.h>
#include <wrl/client.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace talxrend {

using Microsoft::WRL::ComPtr;

[[nodiscard]] inline std::string utf8(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const auto convert = [&](char* bytes, int size) {
        return WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes, size, nullptr, nullptr);
    };
    std::string bytes(convert(nullptr, 0), '\0');
    convert(bytes.data(), static_cast<int>(bytes.size()));
    return bytes;
}

// A call that has failed. what() is one line of UTF-8: what was done, why it failed, the code.
class Failure : public std::runtime_error {
public:
    // what: UTF-8. text: why it failed; where it is empty, what() has the system's words for the code.
    Failure(HRESULT code, std::string_view what, std::wstring text = {}, std::wstring source = {})
        : runtime_error(line(code, what, text)), code_(code),
          words_(std::make_shared<const Words>(Words{std::move(text), std::move(source)})) {}

    [[nodiscard]] HRESULT code() const { return code_; }
    // The failing object's own description, such as "Engine uninitialized."; empty where it gave none.
    [[nodiscard]] const std::wstring& text() const { return words_->text; }
    // The ProgID of the class that gave the description.
    [[nodiscard]] const std::wstring& source() const { return words_->source; }

private:
    struct Words {
        std::wstring text;
        std::wstring source;
    };

    static std::string line(HRESULT code, std::string_view what, const std::wstring& text) {
        std::wstring why = text.empty() ? systemText(code) : text;
        why.erase(why.find_last_not_of(L" .") + 1);
        char digits[16];
        std::snprintf(digits, sizeof digits, " (0x%08lX)", static_cast<unsigned long>(code));
        return std::string(what) + (why.empty() ? "" : ": " + utf8(why)) + digits;
    }

    static std::wstring systemText(HRESULT code) {
        wchar_t text[512];
        const DWORD flags =
            FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
        return {text,
                FormatMessageW(flags, nullptr, static_cast<DWORD>(code), 0, text, ARRAYSIZE(text), nullptr)};
    }

    HRESULT code_;
    std::shared_ptr<const Words> words_; // shared, for copying an exception must not fail
};

// Throws a Failure for a failure code of a function that leaves no error information.
inline void check(HRESULT hr, std::string_view what) {
    if (FAILED(hr)) {
        throw Failure(hr, what);
    }
}

// Throws a Failure for a failure code that a method of the object's interface has answered: with the error
// information of the thread if the object says that it leaves some for this interface (what lies there
// otherwise is an older failure's). To be called before any other call that may fail.
template <class Interface>
void check(HRESULT hr, Interface* object, std::string_view what) {
    if (SUCCEEDED(hr)) {
        return;
    }
    ComPtr<ISupportErrorInfo> support;
    ComPtr<IErrorInfo> info;
    if (!object || FAILED(object->QueryInterface(IID_PPV_ARGS(&support))) ||
        support->InterfaceSupportsErrorInfo(__uuidof(Interface)) != S_OK || GetErrorInfo(0, &info) != S_OK) {
        throw Failure(hr, what);
    }
    const auto read = [&](HRESULT (STDMETHODCALLTYPE IErrorInfo::*get)(BSTR*)) {
        BSTR text = nullptr;
        (info.Get()->*get)(&text);
        const std::unique_ptr<OLECHAR, decltype(&SysFreeString)> owned(text, SysFreeString);
        return std::wstring(text ? text : L"", SysStringLen(text));
    };
    throw Failure(hr, what, read(&IErrorInfo::GetDescription), read(&IErrorInfo::GetSource));
}

template <class Interface>
void check(HRESULT hr, const ComPtr<Interface>& object, std::string_view what) {
    check(hr, object.Get(), what);
}

// Keeps exceptions out of code that must not see them, such as the system's around a window procedure, until
// somebody can have them.
class Guard {
public:
    // What the work answers; a zero if it throws. The first exception is kept.
    template <class Work>
    auto run(Work&& work) noexcept -> std::invoke_result_t<Work> {
        try {
            return std::forward<Work>(work)();
        } catch (...) {
            if (!kept_) {
                kept_ = std::current_exception();
            }
            return std::invoke_result_t<Work>();
        }
    }

    [[nodiscard]] bool holdsFailure() const { return kept_ != nullptr; }
    // Throws what is kept, and keeps it no longer.
    void rethrow() {
        if (kept_) {
            std::rethrow_exception(std::exchange(kept_, nullptr));
        }
    }
    void forget() { kept_ = nullptr; }

private:
    std::exception_ptr kept_;
};

} // namespace talxrend
