#include <algorithm>

#include "platform/posix/desktop.h"
#include "platform/posix/faults.h"
#include "platform/posix/paths.h"
#include "platform/registry.h"
#include "platform/shell.h"

namespace platform {
namespace {

constexpr HRESULT kNoAssociation = static_cast<HRESULT>(0x80070483);

/// The unnamed value of a class's key, of the user or else of the machine; empty if there is none.
WideString ClassValue(const WideString& name) {
    const WideString path = TEXT("Software\\Classes\\") + name;
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) continue;
        WCHAR text[1024] = {};
        DWORD bytes = sizeof text - sizeof(WCHAR);
        DWORD type = 0;
        const LSTATUS result =
            RegQueryValueExW(key, nullptr, nullptr, &type, reinterpret_cast<LPBYTE>(text), &bytes);
        RegCloseKey(key);
        if (result == ERROR_SUCCESS && type == REG_SZ && *text) return text;
    }
    return {};
}

/// The program of a command line: a text in quotes, or what stands in front of a blank.
WideString ProgramOf(WideView command) {
    const bool isQuoted = command.substr(0, 1) == TEXT("\"");
    if (isQuoted) command.remove_prefix(1);
    return WideString(command.substr(0, command.find(isQuoted ? '"' : ' ')));
}

/// What the desktop opens without a class in the registry.
bool IsOfDesktop(WideView protocol) {
    static constexpr WideView kProtocols[] = {TEXT("file"), TEXT("ftp"), TEXT("http"),
                                              TEXT("https"), TEXT("mailto")};
    return std::find(std::begin(kProtocols), std::end(kProtocols), protocol) !=
           std::end(kProtocols);
}

WideString HandlerOf(const WideString& association, const WideString& verb) {
    WideString name = association;
    if (association[0] == '.') {
        name = ClassValue(association);
        if (name.empty()) return {};
    }
    const WideString command = ClassValue(name + TEXT("\\shell\\") + verb + TEXT("\\command"));
    if (!command.empty()) return ProgramOf(command);
    WideString opener;
    if (!IsOfDesktop(name) || !ToWindowsPath(DesktopOpener(), opener)) return {};
    return opener.size() > 3 ? opener : WideString();  // a root alone: there is no opener
}

}  // namespace
}  // namespace platform

HRESULT AssocQueryStringW(ASSOCF, ASSOCSTR kind, LPCWSTR association, LPCWSTR verb, LPWSTR text,
                          LPDWORD size) noexcept {
    using namespace platform;
    if (InjectFault("AssocQueryStringW")) return E_FAIL;
    if (kind != ASSOCSTR_EXECUTABLE || !association || !*association || !size) return E_INVALIDARG;
    const WideString handler = HandlerOf(association, verb ? verb : TEXT("open"));
    if (handler.empty()) return kNoAssociation;
    const auto needed = static_cast<DWORD>(handler.size() + 1);
    const bool isTooSmall = text && *size < needed;
    if (text && !isTooSmall) std::copy_n(handler.c_str(), needed, text);
    *size = needed;
    return isTooSmall ? E_POINTER : text ? S_OK : S_FALSE;
}
