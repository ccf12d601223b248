// See plane_set.h.
#include "imagelib/plane_set.h"

#include "com/class_info.h"
#include "com/com_object.h"

#include <atomic>
#include <climits>
#include <cstdlib>

using Microsoft::WRL::ComPtr;

namespace talx {

namespace {

// Rows of the library's own memory start on multiples of it.
constexpr long long rowAlignment = 16;

// Exclusive use of the slim lock, which needs no memory, for the length of a scope.
class LockHold {
public:
    explicit LockHold(SRWLOCK& lock) : lock_(lock) { AcquireSRWLockExclusive(&lock_); }
    ~LockHold() { ReleaseSRWLockExclusive(&lock_); }
    LockHold(const LockHold&) = delete;
    LockHold& operator=(const LockHold&) = delete;

private:
    SRWLOCK& lock_;
};

class CTalPelAccess : public CComObjectRootEx<CComMultiThreadModel>,
                      public ITalPelAccess,
                      public ISupportErrorInfoImpl {
public:
    CTalPelAccess(std::byte* data, long rowStride, std::shared_ptr<void> memory, const CLSID& clsid)
        : data_(data), rowStride_(rowStride), memory_(std::move(memory)), clsid_(clsid) {}

    static std::span<const ComInterfaceEntry> interfaceMap() {
        static constexpr ComInterfaceEntry entries[] = {comInterface<CTalPelAccess, ITalPelAccess>(),
                                                        comInterface<CTalPelAccess, ISupportErrorInfo>()};
        return entries;
    }

    STDMETHOD(get_Data)(__int64* pData) override {
        return whileLocked(L"get_Data", pData, static_cast<__int64>(reinterpret_cast<INT_PTR>(data_)));
    }
    STDMETHOD(get_RowStride)(long* pRowStride) override {
        return whileLocked(L"get_RowStride", pRowStride, rowStride_);
    }
    STDMETHOD(Unlock)() override {
        return locked_.exchange(false) ? S_OK : method(L"Unlock", [] { checkLocked(false); });
    }

private:
    template <class Body>
    HRESULT method(const wchar_t* name, Body&& body) const {
        return MethodFrame({__uuidof(ITalPelAccess), clsid_}, name).run(std::forward<Body>(body));
    }
    static void checkLocked(bool locked) {
        if (!locked) {
            fail(E_UNEXPECTED, L"The access has been unlocked already.");
        }
    }
    template <class Value>
    HRESULT whileLocked(const wchar_t* name, Value* result, Value value) const {
        if (result && locked_.load()) { // what cannot fail needs no frame
            *result = value;
            return S_OK;
        }
        return method(name, [&] {
            checkPointer(result);
            *result = 0;
            checkLocked(false);
        });
    }

    std::byte* const data_;
    const long rowStride_;
    const std::shared_ptr<void> memory_;
    const CLSID& clsid_;
    std::atomic<bool> locked_ = true;
};

} // namespace

PlaneSet::Content PlaneSet::content() const {
    const LockHold hold(lock_);
    return content_;
}

long PlaneSet::width() const {
    const LockHold hold(lock_);
    return content_.width;
}

long PlaneSet::height() const {
    const LockHold hold(lock_);
    return content_.height;
}

void PlaneSet::checkPlane(long plane) const {
    if (plane < 0 || plane >= kind_.maxPlanes) {
        fail(E_INVALIDARG, L"Plane is not the number of a plane of this kind of image.");
    }
}

void PlaneSet::allocate(long width, long height, long planes) {
    if (width < 1 || height < 1) {
        fail(E_INVALIDARG, L"Width and Height must be at least 1.");
    }
    if (planes < kind_.minPlanes || planes > kind_.maxPlanes) {
        fail(E_INVALIDARG, L"Planes is not a number of planes that this kind of image can have.");
    }
    Content content{width, height, {}};
    for (long plane = 0; plane < planes; ++plane) {
        const long long rowBytes = static_cast<long long>(width) * kind_.pelBytes[plane];
        const long long rowStride = (rowBytes + rowAlignment - 1) / rowAlignment * rowAlignment;
        if (rowStride > LONG_MAX) {
            fail(E_OUTOFMEMORY, L"A row of Width pels is longer than RowStride can tell.");
        }
        // calloc knows that fresh pages are zero already, and leaves those of a large image untouched.
        void* const data = std::calloc(static_cast<std::size_t>(height), static_cast<std::size_t>(rowStride));
        if (!data) {
            fail(E_OUTOFMEMORY, L"There is no memory for Width x Height pels.");
        }
        content.planes[plane] = {static_cast<std::byte*>(data), static_cast<long>(rowStride),
                                 std::shared_ptr<void>(data, std::free)};
    }
    const LockHold hold(lock_);
    std::swap(content_, content);
}

void PlaneSet::wrap(long plane, long width, long height, __int64 data, long rowStride, IUnknown* keepAlive) {
    if (data == 0) {
        fail(E_POINTER, L"Data is null.");
    }
    checkPlane(plane);
    if (width < 1 || height < 1) {
        fail(E_INVALIDARG, L"Width and Height must be at least 1.");
    }
    const long long rowBytes = static_cast<long long>(width) * kind_.pelBytes[plane];
    if (height > 1 && std::abs(static_cast<long long>(rowStride)) < rowBytes) {
        fail(E_INVALIDARG, L"RowStride is less than a row of Width pels.");
    }
    std::shared_ptr<void> memory = std::make_shared<ComPtr<IUnknown>>(keepAlive);
    const Plane wrapped{reinterpret_cast<std::byte*>(static_cast<INT_PTR>(data)), rowStride,
                        std::move(memory)};

    Content dropped; // released after the lock
    const LockHold hold(lock_);
    if (plane == 0) {
        std::swap(dropped, content_);
        content_.width = width;
        content_.height = height;
        content_.planes[0] = wrapped;
        return;
    }
    if (width != content_.width || height != content_.height) {
        fail(E_INVALIDARG, L"Width and Height must be those of plane 0.");
    }
    dropped.planes[plane] = std::exchange(content_.planes[plane], wrapped);
}

void PlaneSet::createAccess(long plane, TalPelAccessMode mode, const PlaneRect& rect,
                            ITalPelAccess** access) const {
    checkPointer(access, L"ppAccess is null.");
    *access = nullptr;
    checkPlane(plane);
    if (mode < talPelAccessRead || mode > talPelAccessReadWrite) {
        fail(E_INVALIDARG, L"Mode is not a mode of access.");
    }
    *access = createAccess(content(), plane, rect).Detach();
}

void PlaneSet::createReadAccesses(ITalPelAccess** first, ITalPelAccess** second) const {
    for (ITalPelAccess** const result : {first, second}) {
        if (result) {
            *result = nullptr;
        }
    }
    checkPointer(first, L"ppValues is null.");
    checkPointer(second, L"ppMask is null.");
    if (first == second) {
        fail(E_INVALIDARG, L"ppValues and ppMask are the same.");
    }
    const Content now = content();
    ComPtr<ITalPelAccess> access = createAccess(now, 0, {});
    if (now.planes[1].data) {
        *second = createAccess(now, 1, {}).Detach();
    }
    *first = access.Detach();
}

ComPtr<ITalPelAccess> PlaneSet::createAccess(const Content& content, long plane,
                                             const PlaneRect& rect) const {
    const Plane& source = content.planes[plane];
    if (!source.data) {
        fail(E_FAIL, L"The plane has no memory.");
    }
    const bool whole = rect.left == 0 && rect.top == 0 && rect.width == 0 && rect.height == 0;
    if (!whole && (rect.left < 0 || rect.top < 0 || rect.width < 1 || rect.height < 1 ||
                   rect.width > content.width - rect.left || rect.height > content.height - rect.top)) {
        fail(E_INVALIDARG, L"Left, Top, Width and Height choose a part that is not inside the plane.");
    }
    std::byte* const data = source.data + std::ptrdiff_t{rect.top} * source.rowStride +
                            std::ptrdiff_t{rect.left} * kind_.pelBytes[plane];
    return makeObject<CTalPelAccess>(data, source.rowStride, source.memory, clsid_);
}

} // namespace talx
