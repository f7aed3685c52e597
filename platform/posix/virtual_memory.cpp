#include <map>
#include <mutex>
#include <sys/mman.h>

#include "platform/memory.h"
#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"

namespace platform {
namespace {

constexpr SIZE_T kGranularity = 0x10000;
constexpr SIZE_T kPage = 0x1000;
constexpr SIZE_T kHugePage = 0x200000;

// A process that holds this much gets huge pages, which spare it most misses of the processor's
// table of addresses; one that holds less would mostly get memory that it does not touch.
constexpr SIZE_T kEnoughForHugePages = 0x1000000;

class Allocations {
public:
    /// \return how much there is in all.
    SIZE_T Add(void* address, SIZE_T size) {
        const std::lock_guard guard(lock_);
        sizes_.emplace(address, size);
        total_ += size;
        return total_;
    }

    /// Gives the size of what begins there and forgets it; 0 for nothing.
    SIZE_T Remove(void* address) {
        const std::lock_guard guard(lock_);
        const auto found = sizes_.find(address);
        if (found == sizes_.end()) return 0;
        const SIZE_T size = found->second;
        sizes_.erase(found);
        total_ -= size;
        return size;
    }

private:
    std::mutex lock_;
    std::map<void*, SIZE_T> sizes_;
    SIZE_T total_ = 0;
};

Allocations& Known() {
    // Never destroyed: memory may be given back while the process ends.
    static auto& known = *new Allocations;
    return known;
}

/// Pages at a multiple of `alignment`: a larger stretch is taken and its ends given back.
void* MapAligned(SIZE_T size, SIZE_T alignment) noexcept {
    const SIZE_T room = size + alignment - kPage;
    void* const mapped = mmap(nullptr, room, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped == MAP_FAILED) return nullptr;
    const auto begin = reinterpret_cast<UINT_PTR>(mapped);
    const UINT_PTR aligned = (begin + alignment - 1) & ~(alignment - 1);
    const SIZE_T before = aligned - begin;
    if (before) munmap(mapped, before);
    if (room > before + size) {
        munmap(reinterpret_cast<void*>(aligned + size), room - before - size);
    }
    return reinterpret_cast<void*>(aligned);
}

}  // namespace
}  // namespace platform

LPVOID VirtualAlloc(LPVOID address, SIZE_T size, DWORD type, DWORD protection) noexcept {
    using namespace platform;
    if (InjectFault("VirtualAlloc")) return nullptr;
    if (address || type != MEM_COMMIT || protection != PAGE_READWRITE || size == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    void* pages = nullptr;
    if (size <= SIZE_MAX / 2) {
        size = (size + kPage - 1) & ~(kPage - 1);
        pages = MapAligned(size, size < kHugePage ? kGranularity : kHugePage);
    }
    if (!pages) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const SIZE_T total = Known().Add(pages, size);
    if (size >= kHugePage && total >= kEnoughForHugePages) {
        (void)madvise(pages, size, MADV_HUGEPAGE);  // A wish; a system without them says no.
    }
    return pages;
}

BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD type) noexcept {
    if (size != 0 || type != MEM_RELEASE) return platform::Fail(ERROR_INVALID_PARAMETER);
    const SIZE_T known = platform::Known().Remove(address);
    if (known == 0) return platform::Fail(ERROR_INVALID_ADDRESS);
    munmap(address, known);
    return TRUE;
}
