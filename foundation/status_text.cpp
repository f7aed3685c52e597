#include "foundation/status_text.h"

#include <algorithm>

#include "foundation/status_category.h"
#include "platform/messages.h"
#include "platform/modules.h"

namespace AUX {
namespace {

struct SystemModule {
    const char* file;
    const WCHAR* origin;
};

// Asked in this order, after the system itself.
constexpr SystemModule kSystemModules[] = {
    {"wininet.dll", TEXT("WinINet")},
    {"quartz.dll", TEXT("DirectShow")},
};

constexpr DWORD kOwnText = FORMAT_MESSAGE_IGNORE_INSERTS;  // Nothing to insert is at hand.

bool IsOwn(Status status) noexcept { return (static_cast<std::uint32_t>(status) >> 25 & 1) != 0; }

std::uint32_t CategoryOf(Status status) noexcept {
    return IsOwn(status) ? static_cast<std::uint32_t>(status) >> 16 & 0x1FF : 0;
}

bool IsSystemError(std::uint32_t category) noexcept {
    return category == static_cast<std::uint32_t>(StatusCategory::OperatingSystem);
}

// The code by which the system may know a status.
DWORD SystemCode(std::uint32_t category, Status status) noexcept {
    const DWORD code = static_cast<DWORD>(status);
    return IsSystemError(category) ? code & 0xFFFF : code;
}

bool IsKnownTo(DWORD source, HMODULE module, DWORD code) noexcept {
    constexpr DWORD kUnits = 128;
    char buffer[kUnits];
    if (FormatMessageA(source | kOwnText, module, code, 0, buffer, kUnits, nullptr)) return true;
    return GetLastError() == ERROR_INSUFFICIENT_BUFFER;  // Known, and longer.
}

// Gives the message of the system or of a module; empty if there is none or memory runs out.
void ReadSystemMessage(DWORD source, HMODULE module, DWORD code, WString& message) noexcept {
    constexpr std::uint32_t kMostUnits = 0x10000;  // No text of the system is longer.
    for (std::uint32_t units = 256; units <= kMostUnits; units *= 4) {
        if (!message.SetLength(units - 1)) break;
        const DWORD length =
            FormatMessageW(source | kOwnText, module, code, 0, message.Data(), units, nullptr);
        const bool isShort = !length && GetLastError() == ERROR_INSUFFICIENT_BUFFER;
        (void)message.SetLength(length);  // Shorter never fails.
        if (!isShort) return;
    }
    message.Clear();
}

void ReadMessage(std::uint32_t category, Status status, WString& message) noexcept {
    if (IsOwn(status) && !IsSystemError(category) &&
        status_detail::FindMessage(category, static_cast<std::uint32_t>(status) & 0xFFFF,
                                   message)) {
        return;
    }
    const DWORD code = SystemCode(category, status);
    ReadSystemMessage(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, message);
    for (const SystemModule& module : kSystemModules) {
        if (!message.IsEmpty()) return;
        const HMODULE handle = GetModuleHandleA(module.file);
        if (handle) ReadSystemMessage(FORMAT_MESSAGE_FROM_HMODULE, handle, code, message);
    }
}

const WCHAR* SystemOrigin(DWORD code) noexcept {
    constexpr const WCHAR* kSystem = TEXT("System");
    if (IsKnownTo(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code)) return kSystem;
    for (const SystemModule& module : kSystemModules) {
        const HMODULE handle = GetModuleHandleA(module.file);
        if (handle && IsKnownTo(FORMAT_MESSAGE_FROM_HMODULE, handle, code)) return module.origin;
    }
    return kSystem;
}

std::uint32_t CopyOut(WStringView text, WCHAR* buffer, std::uint32_t length) noexcept {
    if (buffer && length > 0) {
        const std::size_t fits = std::min<std::size_t>(text.size(), length - 1);
        std::copy_n(text.data(), fits, buffer);
        buffer[fits] = 0;
    }
    return static_cast<std::uint32_t>(text.size());
}

using Reader = std::uint32_t(std::uint32_t, Status, WCHAR*, std::uint32_t);

// Gives what a reader of the interface gives; empty also when memory runs out.
void ReadWhole(Reader* read, std::uint32_t units, Status status, WString& text) noexcept {
    if (!units || !text.SetLength(units)) return;
    // Another thread may have exchanged the category meanwhile.
    const std::uint32_t length = read(CategoryOf(status), status, text.Data(), units + 1);
    (void)text.SetLength(std::min(units, length));
}

WStringView SeverityText(Status status) noexcept {
    constexpr WStringView kTexts[] = {TEXT("Success"), TEXT("Warning"), TEXT("Error"),
                                      TEXT("Failure")};
    return kTexts[static_cast<std::uint32_t>(status) >> 30];
}

// Trailing blanks and line ends go, but never the first character, and a full stop ends it.
bool AppendSentence(WString& output, WStringView message) noexcept {
    std::size_t length = message.size();
    while (length > 1 && message[length - 1] <= TEXT(' ')) --length;
    if (!output.Append(message.substr(0, length))) return false;
    return message[length - 1] == TEXT('.') || output.Append(TEXT("."));
}

bool AppendUnknown(WString& output, Status status) noexcept {
    WString text;
    const std::uint32_t code = static_cast<std::uint32_t>(status);
    const bool isMade = IsFailure(status) ? text.Format(TEXT("Unknown error: 0x%08X."), code)
                                          : text.Format(TEXT("Unknown code: 0x%08X."), code);
    return isMade && output.Append(text);
}

bool AppendText(WString& output, Status status, bool messageOnly) noexcept {
    const std::uint32_t originUnits = GetStatusOrigin(CategoryOf(status), status, nullptr, 0);
    if (originUnits == 0) return AppendUnknown(output, status);
    if (!messageOnly) {
        WString origin;
        ReadWhole(GetStatusOrigin, originUnits, status, origin);
        const WStringView shown = origin.IsEmpty() ? WStringView(TEXT("Unknown")) : origin;
        if (!output.Append(SeverityText(status)) || !output.Append(TEXT(" [")) ||
            !output.Append(shown) || !output.Append(TEXT("]: "))) {
            return false;
        }
    }
    WString message;
    const std::uint32_t units = GetStatusMessage(CategoryOf(status), status, nullptr, 0);
    ReadWhole(GetStatusMessage, units, status, message);
    if (message.IsEmpty()) return AppendUnknown(output, status);
    return AppendSentence(output, message);
}

}  // namespace

bool StatusToText(Status status, WString& output, bool messageOnly) noexcept {
    output.Clear();
    if (status == kStatusOk) {
        (void)output.Append(TEXT("Success"));
    } else {
        (void)AppendText(output, status, messageOnly);
    }
    return true;
}

std::uint32_t GetStatusMessage(std::uint32_t category, Status status, WCHAR* buffer,
                               std::uint32_t length) noexcept {
    WString message;
    ReadMessage(category, status, message);
    return CopyOut(message, buffer, length);
}

std::uint32_t GetStatusOrigin(std::uint32_t category, Status status, WCHAR* buffer,
                              std::uint32_t length) noexcept {
    WString name;
    if (IsOwn(status) && status_detail::FindCategoryName(category, name)) {
        return CopyOut(name, buffer, length);
    }
    return CopyOut(SystemOrigin(SystemCode(category, status)), buffer, length);
}

}  // namespace AUX
