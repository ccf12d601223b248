// See method_frame.h.
#include "com/method_frame.h"

#include "com/bstr.h"
#include "com/error_codes.h"
#include "com/module.h"
#include "talxrend.h"

#include <wrl/client.h>

using Microsoft::WRL::ComPtr;

namespace talx {

namespace {

// The HRESULTs whose description is always the module's own.
constexpr bool isOwnCode(HRESULT hr) {
    const auto code = static_cast<unsigned long>(hr);
    return code >= 0x80044000 && code <= 0x80047FFF;
}

// Installs the error information for the calling thread; a failure leaves the previous one.
HRESULT setErrorInfo(const CLSID& clsid, const wchar_t* description) {
    ComPtr<ICreateErrorInfo> error;
    HRESULT hr = CreateErrorInfo(error.GetAddressOf());
    if (FAILED(hr)) {
        return hr;
    }
    wchar_t* progId = nullptr;
    hr = ProgIDFromCLSID(clsid, &progId);
    if (SUCCEEDED(hr)) {
        hr = error->SetSource(progId);
        CoTaskMemFree(progId);
    } else if (hr != E_OUTOFMEMORY) {
        hr = S_OK; // a class that is not registered is an error's source without a name
    }
    // A new error object's help file is none and its help context 0.
    if (SUCCEEDED(hr)) {
        hr = error->SetGUID(__uuidof(ITalRenderEngine));
    }
    if (SUCCEEDED(hr)) {
        hr = error->SetDescription(const_cast<wchar_t*>(description));
    }
    ComPtr<IErrorInfo> info;
    if (SUCCEEDED(hr)) {
        hr = error.As(&info);
    }
    return FAILED(hr) ? hr : SetErrorInfo(0, info.Get());
}

// As reportError, but gives setErrorInfo's result.
HRESULT describeError(const CLSID& clsid, const wchar_t* description, HRESULT hr, UINT resourceId) {
    if (resourceId == 0 && isOwnCode(hr)) {
        resourceId = LOWORD(hr);
    }
    wchar_t message[256];
    if (resourceId != 0) {
        const bool found = LoadStringW(comModule().instance(), resourceId, message,
                                       static_cast<int>(std::size(message))) > 0;
        description = found ? message : L"Unknown Error";
    }
    return setErrorInfo(clsid, description);
}

} // namespace

HRESULT reportError(const CLSID& clsid, const wchar_t* description, HRESULT hr, UINT resourceId) {
    if (describeError(clsid, description, hr, resourceId) == E_OUTOFMEMORY) {
        throw _com_error(E_OUTOFMEMORY);
    }
    return hr;
}

HRESULT MethodFrame::reportComError(const _com_error& error) const {
    ComPtr<IErrorInfo> info;
    *info.GetAddressOf() = error.ErrorInfo(); // not Attach: MinGW's adds a reference
    Bstr detail;
    if (info) {
        info->GetDescription(detail.put());
    }
    // The failure is returned even if nothing can be told about it: no exception may take its place.
    const Bstr text{name_, L" ", detail.view()};
    describeError(clsid_, text.c_str(), error.Error(), 0);
    return error.Error();
}

HRESULT MethodFrame::reportOutOfMemory() const {
    describeError(clsid_, name_, E_OUTOFMEMORY, 0);
    return E_OUTOFMEMORY;
}

} // namespace talx
