// A one-dimensional SAFEARRAY as the engines take them: filled once, then handed over by address.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstring>
#include <new>
#include <vector>

namespace talview {

class SafeArray {
public:
    template <class Element>
    SafeArray(VARTYPE type, const std::vector<Element>& elements)
        : array_(SafeArrayCreateVector(type, 0, static_cast<ULONG>(elements.size()))) {
        if (!array_) {
            throw std::bad_alloc();
        }
        std::memcpy(array_->pvData, elements.data(), elements.size() * sizeof(Element));
    }
    ~SafeArray() { SafeArrayDestroy(array_); }
    SafeArray(const SafeArray&) = delete;
    SafeArray& operator=(const SafeArray&) = delete;

    [[nodiscard]] SAFEARRAY** address() { return &array_; }

private:
    SAFEARRAY* array_;
};

} // namespace talview
