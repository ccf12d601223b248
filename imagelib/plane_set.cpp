// See plane_set.h.
#include "imagelib/plane_set.h"

#include "com/com_object.h"

#include <atomic>
#include <climits>
#include <cstdlib>

using Microsoft::WRL::ComPtr;

namespace talx {

namespace {

// Rows of the library's own memory start on multiples of it.
constexpr long long rowAlignment = 16;

class CTalPelAccess : public CComObjectRootEx<CComMultiThreadModel>, public ITalPelAccess {
public:
    CTalPelAccess(std::byte* data, long rowStride, std::shared_ptr<void> memory)
        : data_(data), rowStride_(rowStride), memory_(std::move(memory)) {}

    static std::span<const ComInterfaceEntry> interfaceMap() {
        static constexpr ComInterfaceEntry entries[] = {comInterface<CTalPelAccess, ITalPelAccess>()};
        return entries;
    }

    STDMETHOD(get_Data)(__int64* pData) override {
        return whileLocked(pData, static_cast<__int64>(reinterpret_cast<INT_PTR>(data_)));
    }
    STDMETHOD(get_RowStride)(long* pRowStride) override { return whileLocked(pRowStride, rowStride_); }
    STDMETHOD(Unlock)() override { return locked_.exchange(false) ? S_OK : E_UNEXPECTED; }

private:
    template <class Value>
    HRESULT whileLocked(Value* result, Value value) const {
        if (!result) {
            return E_POINTER;
        }
        const bool locked = locked_.load();
        *result = locked ? value : 0;
        return locked ? S_OK : E_UNEXPECTED;
    }

    std::byte* const data_;
    const long rowStride_;
    const std::shared_ptr<void> memory_;
    std::atomic<bool> locked_ = true;
};

} // namespace

PlaneSet::Content PlaneSet::content() const {
    const std::lock_guard lock(mutex_);
    return content_;
}

long PlaneSet::width() const {
    const std::lock_guard lock(mutex_);
    return content_.width;
}

long PlaneSet::height() const {
    const std::lock_guard lock(mutex_);
    return content_.height;
}

HRESULT PlaneSet::allocate(long width, long height, long planes) {
    if (width < 1 || height < 1 || planes < kind_.minPlanes || planes > kind_.maxPlanes) {
        return E_INVALIDARG;
    }
    Content content{width, height, {}};
    for (long plane = 0; plane < planes; ++plane) {
        const long long rowBytes = static_cast<long long>(width) * kind_.pelBytes[plane];
        const long long rowStride = (rowBytes + rowAlignment - 1) / rowAlignment * rowAlignment;
        if (rowStride > LONG_MAX) {
            return E_OUTOFMEMORY;
        }
        // calloc knows that fresh pages are zero already, and leaves those of a large image untouched.
        void* const data = std::calloc(static_cast<std::size_t>(height), static_cast<std::size_t>(rowStride));
        if (!data) {
            return E_OUTOFMEMORY;
        }
        content.planes[plane] = {static_cast<std::byte*>(data), static_cast<long>(rowStride),
                                 std::shared_ptr<void>(data, std::free)};
    }
    const std::lock_guard lock(mutex_);
    std::swap(content_, content);
    return S_OK;
}

HRESULT PlaneSet::wrap(long plane, long width, long height, __int64 data, long rowStride,
                       IUnknown* keepAlive) {
    if (data == 0) {
        return E_POINTER;
    }
    if (!isPlane(plane) || width < 1 || height < 1) {
        return E_INVALIDARG;
    }
    const long long rowBytes = static_cast<long long>(width) * kind_.pelBytes[plane];
    if (height > 1 && std::abs(static_cast<long long>(rowStride)) < rowBytes) {
        return E_INVALIDARG;
    }
    std::shared_ptr<void> memory = std::make_shared<ComPtr<IUnknown>>(keepAlive);
    const Plane wrapped{reinterpret_cast<std::byte*>(static_cast<INT_PTR>(data)), rowStride,
                        std::move(memory)};

    Content dropped; // released after the lock
    const std::lock_guard lock(mutex_);
    if (plane == 0) {
        std::swap(dropped, content_);
        content_.width = width;
        content_.height = height;
        content_.planes[0] = wrapped;
        return S_OK;
    }
    if (width != content_.width || height != content_.height) {
        return E_INVALIDARG;
    }
    dropped.planes[plane] = std::exchange(content_.planes[plane], wrapped);
    return S_OK;
}

HRESULT PlaneSet::createAccess(long plane, TalPelAccessMode mode, const PlaneRect& rect,
                               ITalPelAccess** access) const {
    if (!access) {
        return E_POINTER;
    }
    *access = nullptr;
    if (!isPlane(plane) || mode < talPelAccessRead || mode > talPelAccessReadWrite) {
        return E_INVALIDARG;
    }
    return createAccess(content(), plane, rect, access);
}

HRESULT PlaneSet::createReadAccesses(ITalPelAccess** first, ITalPelAccess** second) const {
    for (ITalPelAccess** const result : {first, second}) {
        if (result) {
            *result = nullptr;
        }
    }
    if (!first || !second) {
        return E_POINTER;
    }
    const Content now = content();
    ComPtr<ITalPelAccess> access;
    HRESULT hr = createAccess(now, 0, {}, access.GetAddressOf());
    if (SUCCEEDED(hr) && now.planes[1].data) {
        hr = createAccess(now, 1, {}, second);
    }
    if (SUCCEEDED(hr)) {
        *first = access.Detach();
    }
    return hr;
}

HRESULT PlaneSet::createAccess(const Content& content, long plane, const PlaneRect& rect,
                               ITalPelAccess** access) const {
    const Plane& source = content.planes[plane];
    if (!source.data) {
        return E_FAIL;
    }
    const bool whole = rect.left == 0 && rect.top == 0 && rect.width == 0 && rect.height == 0;
    if (!whole && (rect.left < 0 || rect.top < 0 || rect.width < 1 || rect.height < 1 ||
                   rect.width > content.width - rect.left || rect.height > content.height - rect.top)) {
        return E_INVALIDARG;
    }
    std::byte* const data = source.data + std::ptrdiff_t{rect.top} * source.rowStride +
                            std::ptrdiff_t{rect.left} * kind_.pelBytes[plane];
    *access = makeObject<CTalPelAccess>(data, source.rowStride, source.memory).Detach();
    return S_OK;
}

} // namespace talx
