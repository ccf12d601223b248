// Memory that scaled drawing writes its copy of an image into: kept by the engine and used again, so that a
// repaint neither allocates nor clears what it overwrites anyway.
#pragma once

#include "com/com_object.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace talx {

// A block of memory that lives as long as anyone refers to it: an image that wraps it holds it, too.
class MemoryBlock : public CComObjectRootEx<CComMultiThreadModel>, public IUnknown {
public:
    // Its contents are undefined. Throws std::bad_alloc.
    explicit MemoryBlock(std::size_t size) : bytes_(new std::uint8_t[size]), size_(size) {}

    static std::span<const ComInterfaceEntry> interfaceMap() {
        static constexpr ComInterfaceEntry entries[] = {comInterface<MemoryBlock, IUnknown>()};
        return entries;
    }

    [[nodiscard]] std::uint8_t* bytes() const { return bytes_.get(); }
    [[nodiscard]] std::size_t size() const { return size_; }

private:
    const std::unique_ptr<std::uint8_t[]> bytes_;
    const std::size_t size_;
};

class ScratchMemory {
public:
    using Block = Microsoft::WRL::ComPtr<CComObject<MemoryBlock>>;

    // A block of at least this size that nobody else uses. One is kept, and used again once every other
    // reference to it is gone; a drawing inside another one gets a block of its own, which is not kept.
    // Throws std::bad_alloc.
    [[nodiscard]] Block take(std::size_t size) {
        if (!kept_ || isInUse()) {
            Block block = makeObject<MemoryBlock>(size);
            if (!kept_) {
                kept_ = block;
            }
            return block;
        }
        if (kept_->size() < size) {
            kept_.Reset(); // first, so that the two are never there at once
            kept_ = makeObject<MemoryBlock>(size);
        }
        return kept_;
    }

    // Gives the memory back to the system, now or with the last reference to it.
    void release() { kept_.Reset(); }

private:
    [[nodiscard]] bool isInUse() const {
        kept_->AddRef();
        return kept_->Release() > 1;
    }

    Block kept_;
};

} // namespace talx
