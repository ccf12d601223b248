// Scoped access to the elements of a SAFEARRAY.
#pragma once

#include <oleauto.h>
#include <windows.h>

namespace talx {

// Holds the access for the length of a scope. Null arrays and failures leave it without data.
class SafeArrayAccess {
public:
    explicit SafeArrayAccess(SAFEARRAY* array) : array_(array) {
        result_ = array ? SafeArrayAccessData(array, &data_) : E_POINTER;
    }
    ~SafeArrayAccess() {
        if (SUCCEEDED(result_)) {
            SafeArrayUnaccessData(array_);
        }
    }
    SafeArrayAccess(const SafeArrayAccess&) = delete;
    SafeArrayAccess& operator=(const SafeArrayAccess&) = delete;

    [[nodiscard]] HRESULT result() const { return result_; }
    template <class Element>
    [[nodiscard]] Element* data() const {
        return static_cast<Element*>(data_);
    }

private:
    SAFEARRAY* array_;
    void* data_ = nullptr;
    HRESULT result_;
};

// Whether an array has one dimension and elements of the given size in bytes.
[[nodiscard]] inline bool isVectorOf(SAFEARRAY* array, UINT elementSize) {
    return array && SafeArrayGetDim(array) == 1 && SafeArrayGetElemsize(array) == elementSize;
}

} // namespace talx
