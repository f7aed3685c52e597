#pragma once

/// Synchronisation for systems that lack the Win32 calls.

#include <mutex>

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
/// Waits for an event. Another kind of handle gives WAIT_FAILED with ERROR_INVALID_HANDLE.
DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) noexcept;

void Sleep(DWORD milliseconds) noexcept;
/// Milliseconds since the machine started; wraps after 49.7 days.
DWORD GetTickCount() noexcept;

/// The thread that holds it may enter again.
struct CRITICAL_SECTION {
    std::recursive_mutex mutex;
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

/// The section comes into being with its variable; the spin count is passed over.
BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION section, DWORD spinCount) noexcept;
void EnterCriticalSection(LPCRITICAL_SECTION section) noexcept;
void LeaveCriticalSection(LPCRITICAL_SECTION section) noexcept;
void DeleteCriticalSection(LPCRITICAL_SECTION section) noexcept;
