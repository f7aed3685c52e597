#pragma once

#include <cstdint>

#include "foundation/wstring.h"
#include "platform/registry.h"

/// Typed values of an open registry key. Data are foreign: nothing about their size or shape is
/// taken for granted.

/// Reads a REG_DWORD. \return false, with `value` untouched, if there is none of that name.
[[nodiscard]] bool ReadDwordValue(HKEY key, const WCHAR* name, std::uint32_t& value) noexcept;

/// A failed write is passed over.
void WriteDwordValue(HKEY key, const WCHAR* name, std::uint32_t value) noexcept;

/// Reads a REG_SZ or REG_EXPAND_SZ, not expanded, up to its first zero character. Leaves the string
/// as it was if the value is missing, has another type, or memory runs out; empties it if the value
/// changes its type or grows while it is read, or does not end in a zero character.
/// \return false only when memory runs out.
[[nodiscard]] bool ReadStringValue(HKEY key, const WCHAR* name, AUX::WString& string) noexcept;

/// Writes a REG_SZ with its terminator. A failed write is passed over.
void WriteStringValue(HKEY key, const WCHAR* name, const AUX::WString& string) noexcept;

/// Reads a REG_BINARY that holds a password text. Empties the string first: it stays empty if the
/// value is missing, has another type, or does not decode. \return false only when memory runs out.
[[nodiscard]] bool ReadPasswordValue(HKEY key, const WCHAR* name, AUX::WString& string) noexcept;

/// Writes a password text as REG_BINARY, of no bytes for an empty password. A failed write is
/// passed over.
void WritePasswordValue(HKEY key, const WCHAR* name, const AUX::WString& string) noexcept;
