#pragma once

/// The registry calls for systems that lack them. Names hold 255 UTF-16 units a key and 16383 a
/// value and are compared without regard to case; results are Win32 error codes.

#include "platform/base.h"

using REGSAM = DWORD;
using PHKEY = HKEY*;

/// The current user's Software\Classes over the machine's: a key is opened in the first that has it
/// and created in the machine's. What is opened below a key of it is looked up so anew; subkeys are
/// counted and enumerated, and values found, in the one key that was opened.
#define HKEY_CLASSES_ROOT \
    (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(0x80000000))))
#define HKEY_CURRENT_USER \
    (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(0x80000001))))
#define HKEY_LOCAL_MACHINE \
    (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(0x80000002))))

// Roots that are not served: ERROR_INVALID_HANDLE.
#define HKEY_USERS (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(0x80000003))))
#define HKEY_PERFORMANCE_DATA \
    (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(0x80000004))))
#define HKEY_CURRENT_CONFIG \
    (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(0x80000005))))
#define HKEY_DYN_DATA (reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<LONG>(0x80000006))))

inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;

inline constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

inline constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
inline constexpr REGSAM KEY_SET_VALUE = 0x0002;
inline constexpr REGSAM KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_WRITE = 0x20006;
inline constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;

/// Opens an existing key; `path` is relative to `key`, null or empty means `key` itself.
/// On failure `*result` is null.
/// \return ERROR_FILE_NOT_FOUND if there is no such key, ERROR_ACCESS_DENIED for write access to a
///     read-only profile, ERROR_BAD_PATHNAME for a path that begins with '\\'.
LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM access, PHKEY result) noexcept;

/// Opens a key, with all missing parts of its path created. `options` is
/// REG_OPTION_NON_VOLATILE; class and security are not kept. `disposition` may be null.
LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR keyClass, DWORD options,
                        REGSAM access, const SECURITY_ATTRIBUTES* security, PHKEY result,
                        LPDWORD disposition) noexcept;

/// Reads a value. `*size` is bytes: the room at `data`, then what the value has; with
/// ERROR_MORE_DATA nothing is copied. A text that was stored without a terminator gets one if there
/// is room, and
/// `*size` does not count it.
LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                         LPDWORD size) noexcept;

/// Writes `size` bytes under any type; the name keeps the case of its first writing.
LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                       DWORD size) noexcept;

LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name) noexcept;

/// Deletes the key at `path` with all that is below; with null or empty, only what is below.
LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR path) noexcept;

/// Deletes a key that has no subkeys; with some ERROR_ACCESS_DENIED. `path` is not empty.
LSTATUS RegDeleteKeyW(HKEY key, LPCWSTR path) noexcept;
/// The same; `view` and `reserved` are 0. Not declared for callers that run on systems without it:
/// they look it up in "advapi32.dll".
LSTATUS RegDeleteKeyExW(HKEY key, LPCWSTR path, REGSAM view, DWORD reserved) noexcept;

/// The name of the subkey at a place in the alphabet. `*length` is in units: the room with the
/// terminator, then the length without it. Class and time are not served: those are null.
/// \return ERROR_NO_MORE_ITEMS behind the last one, ERROR_MORE_DATA without room.
LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD length, LPDWORD reserved,
                      LPWSTR keyClass, LPDWORD classLength, FILETIME* lastWritten) noexcept;

/// The value at a place in the alphabet, the unnamed one first. `*length` is as RegEnumKeyExW has
/// it; `*size` and the terminator of texts as RegQueryValueExW. `data` may be null.
/// \return ERROR_NO_MORE_ITEMS behind the last one, ERROR_MORE_DATA without room.
LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD length, LPDWORD reserved,
                      LPDWORD type, LPBYTE data, LPDWORD size) noexcept;

/// Counts, greatest lengths and the time of the last change: each creation or deletion of a direct
/// subkey and each writing or deletion of a value moves it forward, strictly. Lengths of names are
/// units, of data bytes. Class, security and the subkeys' lengths are not served: those must be
/// null (ERROR_NOT_SUPPORTED).
LSTATUS RegQueryInfoKeyW(HKEY key, LPWSTR keyClass, LPDWORD classLength, LPDWORD reserved,
                         LPDWORD subkeys, LPDWORD longestSubkey, LPDWORD longestClass,
                         LPDWORD values, LPDWORD longestName, LPDWORD longestData,
                         LPDWORD securityLength, FILETIME* lastWritten) noexcept;

LSTATUS RegCloseKey(HKEY key) noexcept;

/// Makes a transaction for RegCreateKeyTransactedW; CloseHandle gives it back, and undoes it if it
/// was not committed. All arguments but the description are null or 0.
/// \return INVALID_HANDLE_VALUE on failure.
HANDLE CreateTransaction(SECURITY_ATTRIBUTES* security, GUID* unitOfWork, DWORD options,
                         DWORD isolationLevel, DWORD isolationFlags, DWORD timeoutMs,
                         LPWSTR description) noexcept;
/// Makes the changes of a transaction last and visible, all or none: on failure they are undone.
/// \return FALSE with ERROR_TRANSACTION_ALREADY_ABORTED or ERROR_TRANSACTION_ALREADY_COMMITTED.
BOOL CommitTransaction(HANDLE transaction) noexcept;
BOOL RollbackTransaction(HANDLE transaction) noexcept;

/// As RegCreateKeyExW, inside a transaction: what is done with the handle, and with those opened
/// below it, is part of it, and others see it at the end. Afterwards such a handle gives
/// ERROR_TRANSACTION_NOT_ACTIVE. `extended` is null.
///
/// From its first key on a transaction shuts out all other writers of the profile: they wait up to
/// ten seconds (then ERROR_BUSY), and on its own thread get ERROR_TRANSACTIONAL_CONFLICT at once.
/// (Windows shuts out only those that touch the same keys.)
LSTATUS RegCreateKeyTransactedW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR keyClass,
                                DWORD options, REGSAM access, const SECURITY_ATTRIBUTES* security,
                                PHKEY result, LPDWORD disposition, HANDLE transaction,
                                PVOID extended) noexcept;
