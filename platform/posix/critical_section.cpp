#include <climits>
#include <ctime>
#include <immintrin.h>
#include <linux/futex.h>
#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/sync.h"

namespace platform {
namespace {

// After it every other thread has passed a full barrier since it began. False if the kernel
// refuses.
bool FenceAllThreads() noexcept {
    return mustFenceLeaving || syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0) == 0;
}

bool TryEnter(CRITICAL_SECTION& section) noexcept {
    return !section.isHeld.load(std::memory_order_relaxed) &&
           !section.isHeld.exchange(1, std::memory_order_acquire);
}

}  // namespace

constinit bool mustFenceLeaving = true;

namespace {

// Before there is a second thread that could wait.
[[gnu::constructor]] void RegisterForBarriers() noexcept {
    mustFenceLeaving =
        syscall(SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0) != 0;
}

}  // namespace

// A leaver clears `isHeld` and then looks for waiters; a waiter counts itself, lets all threads
// pass a barrier, and then looks at `isHeld`. So either the leaver sees the count or the waiter
// sees the section free. A leaver that wakes takes one off the count, lest all who leave until the
// woken one runs wake again; whoever finds the section held once more counts itself anew. A count
// that is left over, of a waiter that got in without sleeping, costs one useless wake.
void EnterContended(CRITICAL_SECTION& section) noexcept {
    constexpr timespec kOneMillisecond{0, 1'000'000};
    for (;;) {
        for (std::uint32_t i = 0; i < section.spinCount; ++i) {
            if (TryEnter(section)) return;
            _mm_pause();
        }
        const std::uint32_t wakes = section.wakes.load();
        section.waiters.fetch_add(1);
        // A process that was barred from barriers after its start may miss a wake: it looks by
        // itself.
        const timespec* const timeout = FenceAllThreads() ? nullptr : &kOneMillisecond;
        if (TryEnter(section)) return;
        (void)syscall(SYS_futex, &section.wakes, FUTEX_WAIT_PRIVATE, wakes, timeout, nullptr, 0);
        if (TryEnter(section)) return;
    }
}

void WakeWaiter(CRITICAL_SECTION& section) noexcept {
    std::uint32_t count = section.waiters.load();
    do {
        if (count == 0) return;
    } while (!section.waiters.compare_exchange_weak(count, count - 1));
    section.wakes.fetch_add(1);  // For a waiter that is not asleep yet.
    (void)syscall(SYS_futex, &section.wakes, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

}  // namespace platform

BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION section, DWORD spinCount) noexcept {
    section->isHeld.store(0, std::memory_order_relaxed);
    section->waiters.store(0, std::memory_order_relaxed);
    section->wakes.store(0, std::memory_order_relaxed);
    section->owner.store(nullptr, std::memory_order_relaxed);
    section->depth = 0;
    section->spinCount = spinCount;
    return TRUE;
}

void DeleteCriticalSection(LPCRITICAL_SECTION) noexcept {}
