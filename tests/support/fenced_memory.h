// Memory between two fences: touching the byte behind the one or before the other ends the program.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace talx::test {

// One block, used again and again: what lies against one of its ends is watched to the byte on that side.
// When there is no memory for it, its first use ends the program.
class FencedMemory {
public:
    explicit FencedMemory(std::size_t capacity) : capacity_((capacity + fence - 1) / fence * fence) {
        const std::size_t all = capacity_ + 2 * fence;
#ifdef _WIN32
        block_ = static_cast<std::uint8_t*>(VirtualAlloc(nullptr, all, MEM_RESERVE, PAGE_NOACCESS));
        VirtualAlloc(begin(), capacity_, MEM_COMMIT, PAGE_READWRITE);
#else
        block_ =
            static_cast<std::uint8_t*>(mmap(nullptr, all, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(begin(), capacity_, PROT_READ | PROT_WRITE);
#endif
    }
    ~FencedMemory() {
#ifdef _WIN32
        VirtualFree(block_, 0, MEM_RELEASE);
#else
        munmap(block_, capacity_ + 2 * fence);
#endif
    }
    FencedMemory(const FencedMemory&) = delete;
    FencedMemory& operator=(const FencedMemory&) = delete;

    // The first byte of the block: the byte before it is fenced.
    [[nodiscard]] std::uint8_t* begin() const {
        return block_ + fence;
    }
    // The first of size bytes, at most the capacity, behind which the fence stands.
    [[nodiscard]] std::uint8_t* endingAtFence(std::size_t size) const {
        return begin() + capacity_ - size;
    }

private:
    static constexpr std::size_t fence = 65536; // a multiple of every page size

    std::size_t capacity_;
    std::uint8_t* block_ = nullptr;
};

} // namespace talx::test
