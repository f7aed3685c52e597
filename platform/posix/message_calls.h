#pragma once

/// The texts of error codes for systems that lack them; the code page of narrow texts is UTF-8.

#include <cstdarg>

#include "platform/base.h"

inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_HMODULE = 0x800;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;

/// Writes the text of an error code or HRESULT, with a full stop and a line end behind it, and a
/// terminator. The system's texts are in English and cover what this layer and COM report; modules
/// have no texts here. An HRESULT of the Win32 facility reads as the error in it.
/// \param language  Passed over.
/// \param size      Units of the buffer, the terminator's included.
/// \return the length without the terminator; 0 with ERROR_MR_MID_NOT_FOUND,
///         ERROR_INSUFFICIENT_BUFFER, ERROR_RESOURCE_TYPE_NOT_FOUND (a module was asked) or
///         ERROR_INVALID_PARAMETER.
DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD messageId, DWORD language, LPWSTR buffer,
                     DWORD size, std::va_list* arguments) noexcept;
DWORD FormatMessageA(DWORD flags, LPCVOID source, DWORD messageId, DWORD language, LPSTR buffer,
                     DWORD size, std::va_list* arguments) noexcept;

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_THREAD_ACP = 3;

/// Widens a text; what is not well-formed becomes U+FFFD.
/// \param codePage    CP_ACP or CP_THREAD_ACP, which are the same here.
/// \param narrowSize  Bytes, above 0; or -1 for a text up to its terminator, which counts.
/// \param wideSize    Units of the buffer; 0 only measures.
/// \return the units; 0 with ERROR_INVALID_PARAMETER or ERROR_INSUFFICIENT_BUFFER.
INT MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR narrow, INT narrowSize, LPWSTR wide,
                        INT wideSize) noexcept;
