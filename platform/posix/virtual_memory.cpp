#include <iterator>
#include <memory>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <utility>

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

/// What was given out, by address. Whoever runs out of memory asks here, so nothing throws; and
/// memory may be given back while the process ends, so nothing is destroyed.
class Allocations {
public:
    /// \param total  Gets how much there is in all. \return false if there is no memory to note it.
    [[nodiscard]] bool Add(void* address, SIZE_T size, SIZE_T& total) noexcept {
        auto* const note = new (std::nothrow) Note{address, size, nullptr};
        if (!note) return false;
        const std::lock_guard guard(lock_);
        Note*& first = ListOf(address);
        note->next = std::exchange(first, note);
        total_ += size;
        total = total_;
        return true;
    }

    /// Gives the size of what begins there and forgets it; 0 for nothing.
    SIZE_T Remove(void* address) noexcept {
        const std::lock_guard guard(lock_);
        for (Note** link = &ListOf(address); *link; link = &(*link)->next) {
            if ((*link)->address != address) continue;
            const std::unique_ptr<Note> note(*link);
            *link = note->next;
            total_ -= note->size;
            return note->size;
        }
        return 0;
    }

private:
    struct Note {
        void* address;
        SIZE_T size;
        Note* next;
    };

    Note*& ListOf(void* address) noexcept {
        return lists_[reinterpret_cast<UINT_PTR>(address) / kGranularity % std::size(lists_)];
    }

    std::mutex lock_;
    Note* lists_[1021] = {};  // A prime number: large blocks lie at even distances.
    SIZE_T total_ = 0;
};

constinit Allocations allocations;

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
    SIZE_T total = 0;
    if (!allocations.Add(pages, size, total)) {
        munmap(pages, size);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    if (size >= kHugePage && total >= kEnoughForHugePages) {
        (void)madvise(pages, size, MADV_HUGEPAGE);  // A wish; a system without them says no.
    }
    return pages;
}

BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD type) noexcept {
    if (size != 0 || type != MEM_RELEASE) return platform::Fail(ERROR_INVALID_PARAMETER);
    const SIZE_T known = platform::allocations.Remove(address);
    if (known == 0) return platform::Fail(ERROR_INVALID_ADDRESS);
    munmap(address, known);
    return TRUE;
}
