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

// The word that a waiter sleeps on is 1 as long as somebody holds the section. A leaver clears it
// and then looks for waiters; a waiter counts itself, lets all threads pass a barrier, and then
// looks at the word. So either the leaver sees the count or the waiter sees the cleared word.
void EnterContended(CRITICAL_SECTION& section) noexcept {
    for (std::uint32_t i = 0; i < section.spinCount; ++i) {
        if (TryEnter(section)) return;
        _mm_pause();
    }
    section.waiters.fetch_add(1);
    constexpr timespec kOneMillisecond{0, 1'000'000};
    // A process that was barred from barriers after its start may miss a wake-up: it looks by
    // itself.
    const timespec* const timeout = FenceAllThreads() ? nullptr : &kOneMillisecond;
    while (!TryEnter(section)) {
        (void)syscall(SYS_futex, &section.isHeld, FUTEX_WAIT_PRIVATE, 1, timeout, nullptr, 0);
    }
    section.waiters.fetch_sub(1);
}

void WakeWaiter(CRITICAL_SECTION& section) noexcept {
    (void)syscall(SYS_futex, &section.isHeld, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

}  // namespace platform

BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION section, DWORD spinCount) noexcept {
    section->isHeld.store(0, std::memory_order_relaxed);
    section->waiters.store(0, std::memory_order_relaxed);
    section->owner.store(nullptr, std::memory_order_relaxed);
    section->depth = 0;
    section->spinCount = spinCount;
    return TRUE;
}

void DeleteCriticalSection(LPCRITICAL_SECTION) noexcept {}
