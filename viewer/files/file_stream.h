// A file as decoders read it.
#pragma once

#include "viewer/files/file_facts.h"
#include "viewer/files/handle.h"

#include <talxrend.hpp>

#include <atomic>
#include <functional>
#include <string>

namespace talview {

// Others may write, rename or delete the file meanwhile. For one thread, as an object of COM.
class FileStream final : public IStream {
public:
    // Asked before every read of the stream, with the share of the file that was given already; where it
    // answers no, the read fails, so that a decoder ends early.
    using MayRead = std::function<bool(double)>;

    // Throws talxrend::Failure.
    FileStream(const std::wstring& path, MayRead mayRead);

    // The file without a stream's place and without being asked; refers to the object.
    [[nodiscard]] ByteSource bytes() const;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP Read(void* to, ULONG count, ULONG* done) override;
    STDMETHODIMP Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override;
    STDMETHODIMP Stat(STATSTG* status, DWORD flags) override;
    // A decoder has no use for these.
    STDMETHODIMP Write(const void*, ULONG, ULONG*) override { return STG_E_ACCESSDENIED; }
    STDMETHODIMP SetSize(ULARGE_INTEGER) override { return STG_E_ACCESSDENIED; }
    STDMETHODIMP CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Commit(DWORD) override { return S_OK; }
    STDMETHODIMP Revert() override { return S_OK; }
    STDMETHODIMP LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return STG_E_INVALIDFUNCTION; }
    STDMETHODIMP UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    STDMETHODIMP Clone(IStream**) override { return E_NOTIMPL; }

private:
    ~FileStream() = default;

    std::size_t readAt(std::uint64_t from, void* to, std::size_t count) const;

    Handle file_;
    std::uint64_t size_ = 0;
    MayRead mayRead_;
    std::uint64_t at_ = 0;
    std::uint64_t given_ = 0;
    std::atomic<ULONG> references_{0};
};

} // namespace talview
