#pragma once

/// Access tokens, as far as the integrity level of a process needs them.

#include "platform/handles.h"

#ifndef _WIN32

inline constexpr DWORD TOKEN_QUERY = 0x8;
inline constexpr DWORD SECURITY_MANDATORY_LOW_RID = 0x1000;
inline constexpr DWORD SECURITY_MANDATORY_MEDIUM_RID = 0x2000;
#define SECURITY_MANDATORY_LABEL_AUTHORITY \
    { 0, 0, 0, 0, 0, 16 }

using PSID = void*;
struct SID_IDENTIFIER_AUTHORITY {
    BYTE Value[6];
};
using PSID_IDENTIFIER_AUTHORITY = SID_IDENTIFIER_AUTHORITY*;
struct SID_AND_ATTRIBUTES {
    PSID Sid;
    DWORD Attributes;
};
struct TOKEN_MANDATORY_LABEL {
    SID_AND_ATTRIBUTES Label;
};
enum TOKEN_INFORMATION_CLASS { TokenIntegrityLevel = 25 };

/// Values that stand for the caller; they are not closed.
HANDLE GetCurrentProcess() noexcept;
HANDLE GetCurrentThread() noexcept;

/// No thread impersonates here: always FALSE with ERROR_NO_TOKEN.
BOOL OpenThreadToken(HANDLE thread, DWORD access, BOOL asSelf, HANDLE* token) noexcept;
/// Opens the token of the calling process, the only one there is.
BOOL OpenProcessToken(HANDLE process, DWORD access, HANDLE* token) noexcept;
/// Knows TokenIntegrityLevel: medium, or what the environment variable QUVADA_INTEGRITY ("low",
/// "medium", "high", or the number) or a test says. FALSE with ERROR_INSUFFICIENT_BUFFER and the
/// size in `needed`.
BOOL GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID information,
                         DWORD bytes, LPDWORD needed) noexcept;
PSID_IDENTIFIER_AUTHORITY GetSidIdentifierAuthority(PSID sid) noexcept;
LPDWORD GetSidSubAuthority(PSID sid, DWORD index) noexcept;

#endif
