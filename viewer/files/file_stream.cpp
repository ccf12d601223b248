// Reading at places of a file.
#include "viewer/files/file_stream.h"

#include "viewer/view/text.h"

#include <algorithm>

namespace talview {

namespace {

Handle opened(const std::wstring& path) {
    Handle file = ownFile(CreateFileW(path.c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    if (!file) {
        talxrend::check(HRESULT_FROM_WIN32(GetLastError()), "cannot open " + utf8(path));
    }
    return file;
}

} // namespace

FileStream::FileStream(const std::wstring& path, MayRead mayRead)
    : file_(opened(path)), mayRead_(std::move(mayRead)) {
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file_.get(), &size)) {
        talxrend::check(HRESULT_FROM_WIN32(GetLastError()), "cannot read " + utf8(path));
    }
    size_ = static_cast<std::uint64_t>(size.QuadPart);
}

ByteSource FileStream::bytes() const {
    return {size_, [this](std::uint64_t from, void* to, std::size_t count) {
                return readAt(from, to, count);
            }};
}

std::size_t FileStream::readAt(std::uint64_t from, void* to, std::size_t count) const {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(from);
    place.OffsetHigh = static_cast<DWORD>(from >> 32);
    DWORD done = 0;
    ReadFile(file_.get(), to, static_cast<DWORD>(std::min<std::size_t>(count, 1 << 30)), &done, &place);
    return done;
}

HRESULT FileStream::QueryInterface(REFIID iid, void** object) {
    if (!object) {
        return E_POINTER;
    }
    if (iid != IID_IUnknown && iid != IID_ISequentialStream && iid != IID_IStream) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    *object = static_cast<IStream*>(this);
    AddRef();
    return S_OK;
}

ULONG FileStream::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT FileStream::Read(void* to, ULONG count, ULONG* done) {
    if (!mayRead_(std::min(1.0, static_cast<double>(given_) / static_cast<double>(size_ + 1)))) {
        return E_ABORT;
    }
    const std::size_t bytes = readAt(at_, to, count);
    at_ += bytes;
    given_ += bytes;
    if (done) {
        *done = static_cast<ULONG>(bytes);
    }
    return bytes == count ? S_OK : S_FALSE;
}

HRESULT FileStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) {
    const std::uint64_t start = origin == STREAM_SEEK_SET ? 0 : origin == STREAM_SEEK_CUR ? at_ : size_;
    const auto place = static_cast<std::int64_t>(start + static_cast<std::uint64_t>(move.QuadPart));
    if (origin > STREAM_SEEK_END || place < 0) {
        return STG_E_INVALIDFUNCTION;
    }
    at_ = static_cast<std::uint64_t>(place);
    if (position) {
        position->QuadPart = at_;
    }
    return S_OK;
}

HRESULT FileStream::Stat(STATSTG* status, DWORD /*flags*/) {
    if (!status) {
        return STG_E_INVALIDPOINTER;
    }
    *status = {};
    status->type = STGTY_STREAM;
    status->cbSize.QuadPart = size_;
    return S_OK;
}

} // namespace talview
