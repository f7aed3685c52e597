#pragma once

#include "platform/base.h"

/// What registration does with whole keys.

/// A registry call's result: 0x80070000 plus the code of an error.
[[nodiscard]] constexpr HRESULT ResultOf(LSTATUS status) noexcept {
    return status == ERROR_SUCCESS ? S_OK : static_cast<HRESULT>(0x80070000 | (status & 0xFFFF));
}

/// Deletes a key without subkeys, with RegDeleteKeyExW where the system has it.
LSTATUS DeleteRegistryKey(HKEY parent, const WCHAR* name) noexcept;

/// Deletes a key with all below it. What was deleted before a failure stays so.
/// \return the registry's error, ERROR_FILE_NOT_FOUND also for no such key.
LSTATUS DeleteRegistryTree(HKEY parent, const WCHAR* name) noexcept;

/// Counts the keys directly below one.
[[nodiscard]] HRESULT CountSubkeys(HKEY key, DWORD& count) noexcept;
