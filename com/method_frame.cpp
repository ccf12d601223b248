// See method_frame.h. Nothing here throws.
#include "com/method_frame.h"

#include "com/bstr.h"
#include "com/module.h"

#include <wrl/client.h>

using Microsoft::WRL::ComPtr;

namespace talx {

namespace {

// The HRESULTs whose description is always the module's own.
constexpr bool isOwnCode(HRESULT hr) {
    const auto code = static_cast<unsigned long>(hr);
    return code >= 0x80044000 && code <= 0x80047FFF;
}

HRESULT createErrorInfo(const ErrorSource& source, const wchar_t* description, ComPtr<IErrorInfo>& info) {
    ComPtr<ICreateErrorInfo> error;
    HRESULT hr = CreateErrorInfo(error.GetAddressOf());
    if (FAILED(hr) || !error) {
        return FAILED(hr) ? hr : E_POINTER;
    }
    wchar_t* progId = nullptr;
    hr = ProgIDFromCLSID(source.classId, &progId);
    if (SUCCEEDED(hr)) {
        hr = error->SetSource(progId);
        CoTaskMemFree(progId);
    } else if (hr != E_OUTOFMEMORY) {
        hr = S_OK; // a class that is not registered is an error's source without a name
    }
    // A new error object's help file is none and its help context 0.
    if (SUCCEEDED(hr)) {
        hr = error->SetGUID(source.interfaceId);
    }
    if (SUCCEEDED(hr)) {
        hr = error->SetDescription(const_cast<wchar_t*>(description));
    }
    return FAILED(hr) ? hr : error.As(&info);
}

// Installs the information for the calling thread. A failure leaves the thread without any: what an earlier
// call has left says nothing about this one.
HRESULT installErrorInfo(const ErrorSource& source, const wchar_t* description, HRESULT hr,
                         UINT messageId = 0) {
    if (messageId == 0 && isOwnCode(hr)) {
        messageId = LOWORD(hr);
    }
    wchar_t message[256];
    if (messageId != 0) {
        const bool found =
            LoadStringW(comModule().instance(), messageId, message, static_cast<int>(std::size(message))) > 0;
        description = found ? message : L"Unknown Error";
    }
    ComPtr<IErrorInfo> info;
    const HRESULT created = createErrorInfo(source, description, info);
    const HRESULT installed = SetErrorInfo(0, info.Get());
    return FAILED(created) ? created : installed;
}

} // namespace

HRESULT MethodFrame::report(const StepFailure& failure) const noexcept {
    const wchar_t* const text = failure.text() ? failure.text() : name_;
    if (installErrorInfo(source_, text, failure.Error(), failure.messageId()) == E_OUTOFMEMORY) {
        return report(_com_error(E_OUTOFMEMORY));
    }
    return failure.Error();
}

HRESULT MethodFrame::report(const _com_error& error) const noexcept {
    ComPtr<IErrorInfo> info;
    *info.GetAddressOf() = error.ErrorInfo(); // not Attach: MinGW's adds a reference
    Bstr detail;
    if (info) {
        info->GetDescription(detail.put());
    }
    const Bstr text{name_, L" ", detail.view()};
    installErrorInfo(source_, text ? text.c_str() : name_, error.Error());
    return error.Error();
}

HRESULT MethodFrame::reportOutOfMemory() const noexcept {
    installErrorInfo(source_, name_, E_OUTOFMEMORY);
    return E_OUTOFMEMORY;
}

} // namespace talx
