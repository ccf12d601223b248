// Scoped access to the elements of a SAFEARRAY.
#pragma once

#include <cstdint>
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

// The bytes that an array's elements take, whatever its dimensions and the type of its elements.
[[nodiscard]] inline std::uint64_t sizeInBytes(SAFEARRAY* array) {
    std::uint64_t size = SafeArrayGetElemsize(array);
    for (UINT i = 0; i < SafeArrayGetDim(array); ++i) {
        size *= array->rgsabound[i].cElements;
    }
    return size;
}

} // namespace talx
