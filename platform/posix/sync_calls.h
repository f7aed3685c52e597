#pragma once

/// Synchronisation for systems that lack the Win32 calls.

#include <atomic>

#include "platform/base.h"

inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

/// An event without a name; with one the call fails with ERROR_NOT_SUPPORTED. A transfer that is
/// given the event signals it.
HANDLE CreateEventW(LPSECURITY_ATTRIBUTES security, BOOL manualReset, BOOL signalled,
                    LPCWSTR name) noexcept;
BOOL SetEvent(HANDLE event) noexcept;
BOOL ResetEvent(HANDLE event) noexcept;

/// A mutex that its holder may take again, or the one that has the name: then the error code is
/// ERROR_ALREADY_EXISTS, else ERROR_SUCCESS. Null with ERROR_NOT_ENOUGH_MEMORY. Unlike on Windows,
/// a thread that ends as the holder leaves the others waiting. \param name  Known in this process
/// alone; null is none.
HANDLE CreateMutexA(LPSECURITY_ATTRIBUTES security, BOOL isHeld, LPCSTR name) noexcept;
/// FALSE with ERROR_NOT_OWNER if the calling thread does not hold it, or ERROR_INVALID_HANDLE.
BOOL ReleaseMutex(HANDLE mutex) noexcept;

/// Waits for an event or a mutex, which the thread then holds. Another kind of handle gives
/// WAIT_FAILED with ERROR_INVALID_HANDLE.
DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) noexcept;

void Sleep(DWORD milliseconds) noexcept;
/// Milliseconds since the machine started; wraps after 49.7 days.
DWORD GetTickCount() noexcept;

namespace platform {

/// Whether a leaving thread has to order its steps itself, since the kernel cannot make it do so.
extern bool mustFenceLeaving;

/// What tells this thread from all others that live.
inline const void* ThisThread() noexcept { return __builtin_thread_pointer(); }

}  // namespace platform

/// A lock that the thread which holds it may enter again. Zeroed memory is one that is free. To
/// enter costs one locked instruction, to leave none, as long as nobody waits.
struct CRITICAL_SECTION {
    std::atomic<std::uint32_t> isHeld;
    std::atomic<std::uint32_t> waiters;  // at least the threads that sleep or are about to
    std::atomic<std::uint32_t> wakes;    // what they sleep on: counts the calls to wake one
    std::atomic<const void*> owner;
    std::uint32_t depth;  // the holder's
    std::uint32_t spinCount;
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

namespace platform {

void EnterContended(CRITICAL_SECTION& section) noexcept;
void WakeWaiter(CRITICAL_SECTION& section) noexcept;

}  // namespace platform

/// Makes a free section. \param spinCount  How often to look again before the thread sleeps.
BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION section, DWORD spinCount) noexcept;

inline void EnterCriticalSection(LPCRITICAL_SECTION section) noexcept {
    const void* const self = platform::ThisThread();
    // Only this thread ever writes its own mark there, so another's half-way change cannot read so.
    if (section->owner.load(std::memory_order_relaxed) == self) {
        ++section->depth;
        return;
    }
    std::uint32_t isFree = 0;
    if (!section->isHeld.compare_exchange_strong(isFree, 1, std::memory_order_acquire,
                                                 std::memory_order_relaxed)) {
        platform::EnterContended(*section);
    }
    section->owner.store(self, std::memory_order_relaxed);
    section->depth = 1;
}

/// Only the holder may leave.
inline void LeaveCriticalSection(LPCRITICAL_SECTION section) noexcept {
    if (--section->depth > 0) return;
    section->owner.store(nullptr, std::memory_order_relaxed);
    section->isHeld.store(0, std::memory_order_release);
    // The store must be out before the count is read, or a thread that is about to sleep could be
    // missed. A waiter sees to that from its side, by a barrier on every thread of the process, so
    // here the compiler alone has to keep the order.
    std::atomic_signal_fence(std::memory_order_seq_cst);
    const bool isAwaited = platform::mustFenceLeaving
                               ? section->waiters.fetch_add(0) != 0
                               : section->waiters.load(std::memory_order_relaxed) != 0;
    if (isAwaited) platform::WakeWaiter(*section);
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) noexcept;
