// The one way to fail inside: what cannot be done throws, and the frame around every method
// (com/method_frame.h) turns it into an HRESULT with error information.
//
//     check(hr);                      a platform's step failed
//     require(condition, E_POINTER);  a condition does not hold
//     check(hr, IDS_BLT_FAILED);      either may name a message of the module's string table; without one the
//                                     failure is told by the method's name
//     fail(E_INVALIDARG, L"...");     told by this text
//     raise(hr);                      by a helper that knows no step: told by the method's name, a blank and
//                                     the description of the exception's error object, if it has one
//
// Memory that runs out is std::bad_alloc. Nothing else is thrown. A failure that a method answers to its
// caller without error information is a bare HRESULT.
#pragma once

#include "com/exception_state.h"

#include <comdef.h>

#include <new>
#include <utility>

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

inline void require(bool condition, HRESULT hr, UINT messageId = 0) {
    check(condition ? S_OK : hr, messageId);
}

// A step that should have made an object: a success without one counts as E_POINTER.
template <class Pointer>
void checkMade(HRESULT hr, const Pointer& made, UINT messageId = 0) {
    check(hr, messageId);
    require(made != nullptr, E_POINTER, messageId);
}

[[noreturn]] inline void fail(HRESULT hr, const wchar_t* text) {
    throw StepFailure(hr, text);
}

[[noreturn]] inline void raise(HRESULT hr) {
    throw _com_error(hr);
}

// The failure of the platform's last call that tells by GetLastError; never a success.
[[nodiscard]] inline HRESULT lastErrorResult() {
    const HRESULT hr = HRESULT_FROM_WIN32(GetLastError());
    return FAILED(hr) ? hr : E_FAIL;
}

// A failure without error information: what an earlier call has left says nothing about it.
inline HRESULT bare(HRESULT hr) {
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
        return bare(std::forward<Body>(body)());
    } catch (const _com_error& error) {
        return bare(error.Error());
    } catch (const std::bad_alloc&) {
        return bare(E_OUTOFMEMORY);
    }
}

} // namespace talx
