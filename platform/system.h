#pragma once

/// The process, its threads and the machine.

#include "platform/base.h"

#ifndef _WIN32

DWORD GetCurrentProcessId() noexcept;
/// A number that no other thread of this process has as long as this one lives.
DWORD GetCurrentThreadId() noexcept;

/// Only the fields that have a meaning on this system.
struct STARTUPINFOW {
    DWORD cb;
    LPWSTR lpTitle;
};
/// How this process was started: without a title, but for one that a test has set.
void GetStartupInfoW(STARTUPINFOW* info) noexcept;

struct OSVERSIONINFOA {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    CHAR szCSDVersion[128];
};
inline constexpr DWORD VER_PLATFORM_WIN32_NT = 2;

/// Which Windows this layer behaves as: 10.0. FALSE with ERROR_INSUFFICIENT_BUFFER if
/// `dwOSVersionInfoSize` is too small.
BOOL GetVersionExA(OSVERSIONINFOA* version) noexcept;

/// Only the fields that have a meaning on this system; the others of Windows' structure are absent.
struct SYSTEM_INFO {
    WORD wProcessorArchitecture;
    DWORD dwPageSize;
    DWORD dwNumberOfProcessors;
    DWORD dwAllocationGranularity;
};
inline constexpr WORD PROCESSOR_ARCHITECTURE_AMD64 = 9;

void GetSystemInfo(SYSTEM_INFO* info) noexcept;

#endif
