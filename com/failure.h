// The one way to fail inside: what cannot be done throws, and the frame around every method
// (com/method_frame.h) turns it into an HRESULT with error information.
//
//     check(hr);                      a step failed: told by the method's name
//     check(hr, IDS_BLT_FAILED);      told by a message of the module's string table
//     fail(E_INVALIDARG, L"...");     told by this text
//     throw _com_error(hr);           raised by a helper that knows no step: told by the method's name, a
//     blank and
//                                     the description of the exception's error object, if it has one
//
// Memory that runs out is std::bad_alloc. Nothing else is thrown. A failure that a method itself answers to
// its caller without error information is a bare HRESULT that its body returns.
#pragma once

#include "com/exception_state.h"

#include <comdef.h>

#include <new>

namespace talx {

// A failure with what is to be told about it.
class StepFailure : public _com_error {
public:
    // The message of that id; the method's name for 0.
    explicit StepFailure(HRESULT hr, UINT messageId = 0) : _com_error(hr), messageId_(messageId) {}
    // A text that lives as long as the module.
    StepFailure(HRESULT hr, const wchar_t* text) : _com_error(hr), text_(text) {}

    [[nodiscard]] UINT messageId() const { return messageId_; }
    [[nodiscard]] const wchar_t* text() const { return text_; } // null: none

private:
    UINT messageId_ = 0;
    const wchar_t* text_ = nullptr;
};

inline void check(HRESULT hr, UINT messageId = 0) {
    if (FAILED(hr)) {
        throw StepFailure(hr, messageId);
    }
}

[[noreturn]] inline void fail(HRESULT hr, const wchar_t* text) {
    throw StepFailure(hr, text);
}

// The failure of the last platform call; never a success.
[[nodiscard]] inline HRESULT lastErrorResult() {
    const HRESULT hr = HRESULT_FROM_WIN32(GetLastError());
    return FAILED(hr) ? hr : E_FAIL;
}

// A result without error information. A failure takes away what an earlier call has left in the thread: it
// says nothing about this one.
inline HRESULT bare(HRESULT hr) noexcept {
    if (FAILED(hr)) {
        SetErrorInfo(0, nullptr);
    }
    return hr;
}

// The boundary of a function that sets no error information: what its body throws becomes the HRESULT alone.
template <class Body>
HRESULT guarded(Body&& body) {
    if (!readyThreadForExceptions()) {
        return bare(E_OUTOFMEMORY);
    }
    try {
        return bare(body());
    } catch (const _com_error& error) {
        return bare(error.Error());
    } catch (const std::bad_alloc&) {
        return bare(E_OUTOFMEMORY);
    }
}

} // namespace talx
