#include "platform/messages.h"

#include <algorithm>
#include <cstring>

#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"
#include "platform/posix/message_table.h"
#include "platform/text.h"

namespace platform {
namespace {

constexpr std::string_view kEnd = ".\r\n";

DWORD FailFormat(DWORD error) noexcept {
    SetLastError(error);
    return 0;
}

/// The texts are ASCII, so that one form serves both widths.
template <class Char>
DWORD Format(DWORD flags, DWORD messageId, Char* buffer, DWORD size) noexcept {
    if (!buffer) return FailFormat(ERROR_INVALID_PARAMETER);
    const bool isSystem = flags & FORMAT_MESSAGE_FROM_SYSTEM;
    if (!isSystem) {
        const bool isModule = flags & FORMAT_MESSAGE_FROM_HMODULE;
        return FailFormat(isModule ? ERROR_RESOURCE_TYPE_NOT_FOUND : ERROR_INVALID_PARAMETER);
    }
    const std::string_view text = SystemMessage(messageId);
    if (text.empty()) return FailFormat(ERROR_MR_MID_NOT_FOUND);
    const std::size_t length = text.size() + kEnd.size();
    if (length >= size) return FailFormat(ERROR_INSUFFICIENT_BUFFER);
    Char* const rest = std::copy(text.begin(), text.end(), buffer);
    *std::copy(kEnd.begin(), kEnd.end(), rest) = 0;
    return static_cast<DWORD>(length);
}

}  // namespace
}  // namespace platform

DWORD FormatMessageW(DWORD flags, LPCVOID, DWORD messageId, DWORD, LPWSTR buffer, DWORD size,
                     std::va_list*) noexcept {
    if (platform::InjectFault("FormatMessageW")) return 0;
    return platform::Format(flags, messageId, buffer, size);
}

DWORD FormatMessageA(DWORD flags, LPCVOID, DWORD messageId, DWORD, LPSTR buffer, DWORD size,
                     std::va_list*) noexcept {
    if (platform::InjectFault("FormatMessageA")) return 0;
    return platform::Format(flags, messageId, buffer, size);
}

INT MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR narrow, INT narrowSize, LPWSTR wide,
                        INT wideSize) noexcept {
    using namespace platform;
    if (InjectFault("MultiByteToWideChar")) return 0;
    if ((codePage != CP_ACP && codePage != CP_THREAD_ACP) || flags || !narrow || narrowSize == 0 ||
        wideSize < 0) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const std::size_t bytes =
        narrowSize < 0 ? std::strlen(narrow) + 1 : static_cast<std::size_t>(narrowSize);
    const WideString text = FromUtf8({narrow, bytes});
    const INT length = static_cast<INT>(text.size());
    if (wideSize == 0) return length;
    if (length > wideSize) return Fail(ERROR_INSUFFICIENT_BUFFER);
    text.copy(wide, text.size());
    return length;
}
