#include "foundation/paths.h"

#include <algorithm>
#include <cstring>

#include "foundation/path_characters.h"
#include "platform/shell.h"

namespace AUX {
namespace {

constexpr WCHAR kBackslash = TEXT('\\');

// "C:" or "C:\".
bool IsDriveRoot(WStringView path) noexcept {
    return (path.size() == 2 || (path.size() == 3 && path[2] == kBackslash)) &&
           IsPlainLetter(path[0]) && path[1] == TEXT(':');
}

bool CanBePath(WStringView path) noexcept {
    for (std::size_t i = 0; i < path.size(); ++i) {
        const bool isBeforeSeparator = i + 1 < path.size() && IsPathSeparator(path[i + 1]);
        switch (path[i]) {
            case TEXT('"'):
            case TEXT('*'):
            case TEXT('<'):
            case TEXT('>'):
            case TEXT('|'):
                return false;
            case TEXT(':'):
                if (i + 1 < path.size() && !isBeforeSeparator) return false;
                break;
            case TEXT('?'):
                if (i != 2 || !isBeforeSeparator) return false;
                break;
            default:
                break;
        }
    }
    return true;
}

bool DriveExists(const WCHAR* path, WIN32_FIND_DATAW& found) noexcept {
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) return false;
    found.dwFileAttributes = attributes;
    found.cFileName[0] = path[0];
    found.cAlternateFileName[0] = path[0];
    return true;
}

bool FindIt(const WCHAR* path, WIN32_FIND_DATAW& found) noexcept {
    const platform::FindHandle search(FindFirstFileW(path, &found));
    return static_cast<bool>(search);
}

DWORD AttributesFromShell(DWORD shell) noexcept {
    constexpr struct {
        DWORD shell;
        DWORD file;
    } kPairs[] = {
        {SFGAO_FOLDER, FILE_ATTRIBUTE_DIRECTORY},      {SFGAO_HIDDEN, FILE_ATTRIBUTE_HIDDEN},
        {SFGAO_READONLY, FILE_ATTRIBUTE_READONLY},     {SFGAO_SYSTEM, FILE_ATTRIBUTE_SYSTEM},
        {SFGAO_COMPRESSED, FILE_ATTRIBUTE_COMPRESSED},
    };
    DWORD attributes = 0;
    for (const auto& pair : kPairs) {
        if (shell & pair.shell) attributes |= pair.file;
    }
    return attributes;
}

// A server or a share, which the shell knows and no search finds.
bool NetworkNameExists(WStringView path, const WCHAR* terminated,
                       WIN32_FIND_DATAW& found) noexcept {
    SHFILEINFOW information = {};
    if (!SHGetFileInfoW(terminated, 0, &information, sizeof information, SHGFI_ATTRIBUTES)) {
        return false;
    }
    found = {};
    if (FindIt(terminated, found)) return true;
    found = {};
    found.dwFileAttributes = AttributesFromShell(information.dwAttributes);
    std::size_t start = path.size();
    while (start > 0 && !IsPathSeparator(path[start - 1])) --start;
    constexpr std::size_t kMaxName = MAX_PATH - 1;
    const WStringView name = path.substr(start, kMaxName);
    std::copy(name.begin(), name.end(), found.cFileName);
    return true;
}

// Whether CreateDirectoryW failed because there is nothing to make.
bool IsThere(DWORD error) noexcept {
    return error == NO_ERROR || error == ERROR_ACCESS_DENIED || error == ERROR_FILE_EXISTS ||
           error == ERROR_ALREADY_EXISTS;
}

}  // namespace

bool PathExists(const WCHAR* path, WIN32_FIND_DATAW* found) noexcept {
    WIN32_FIND_DATAW ignored;
    WIN32_FIND_DATAW& record = found ? *found : ignored;
    record = {};
    WStringView text(path);
    if (text.empty() || !CanBePath(text)) return false;
    if (IsDriveRoot(text)) return DriveExists(path, record);

    const std::size_t whole = text.size();
    while (!text.empty() && IsPathSeparator(text.back())) text = text.substr(0, text.size() - 1);
    if (text.empty()) return false;
    WString trimmed;
    if (text.size() < whole) {
        if (!trimmed.Assign(text)) return false;
        path = trimmed.Text();
        if (IsDriveRoot(text)) return DriveExists(path, record);
    }
    WString scratch;
    const WCHAR* const systemPath = ToLongPathForm(path, scratch);
    if (FindIt(systemPath, record)) return true;
    record = {};
    return text.starts_with(TEXT("\\\\")) && NetworkNameExists(text, systemPath, record);
}

const WCHAR* ToLongPathForm(const WCHAR* path, WString& scratch, std::int64_t length) noexcept {
    constexpr WStringView kLongForm = TEXT("\\\\?\\");
    if (!path || path == scratch.Text()) return path;
    WStringView rest =
        length < 0 ? WStringView(path) : WStringView(path, static_cast<std::size_t>(length));
    if (rest.size() < kLongPathUnits || rest.starts_with(kLongForm)) return path;
    WString longForm;
    bool isBuilt = longForm.Append(kLongForm);
    if (IsPathSeparator(rest[0])) {
        isBuilt = isBuilt && longForm.Append(TEXT("UNC\\"));
        rest = rest.substr(IsPathSeparator(rest[1]) ? 2 : 1);
    }
    const std::uint32_t start = longForm.Length();
    if (!isBuilt || !longForm.Append(rest)) return path;
    std::replace(longForm.Data() + start, longForm.Data() + longForm.Length(), TEXT('/'),
                 kBackslash);
    scratch = std::move(longForm);
    return scratch.Text();
}

Status CreateDirectoryTree(const WCHAR* path) noexcept {
    WString text;
    WString scratch;
    const WStringView whole(path);
    if (whole.empty()) return StatusFromSystemError(ERROR_BAD_PATHNAME);
    if (!text.Assign(whole)) return kStatusInsufficientMemory;
    const bool isNetwork = whole.starts_with(TEXT("\\\\"));
    bool isFirst = true;
    std::size_t previous = 0;
    for (std::size_t i = 1; i <= whole.size(); ++i) {
        if (i < whole.size()) {
            // The leading separators of a network name do not split, nor does a doubled one; a
            // relative path may begin with a name of one letter.
            const bool isBehindLetter = i == 1 && whole[0] != kBackslash;
            if (whole[i] != kBackslash || (i - previous < 2 && !isBehindLetter)) continue;
        }
        text.Data()[i] = 0;
        const BOOL isMade = CreateDirectoryW(ToLongPathForm(text.Text(), scratch), nullptr);
        const DWORD error = isMade ? NO_ERROR : GetLastError();
        const bool isServer = isNetwork && isFirst;
        if (!isServer && !IsThere(error)) return StatusFromSystemError(error);
        if (i < whole.size()) text.Data()[i] = kBackslash;
        isFirst = false;
        previous = i;
    }
    return kStatusOk;
}

bool ParentFolderOf(const WCHAR* path, WString& folder, std::int64_t length) noexcept {
    WStringView text =
        length < 0 ? WStringView(path) : WStringView(path, static_cast<std::size_t>(length));
    while (!text.empty() && !IsPathSeparator(text.back())) text = text.substr(0, text.size() - 1);
    if (folder.Assign(text)) return !text.empty();
    folder.Free();
    return false;
}

bool CombinePath(const WCHAR* name, const WCHAR* folder, WString& path) noexcept {
    const auto orNull = [](const WCHAR* text) { return text && *text ? text : nullptr; };
    WCHAR buffer[MAX_PATH + 1] = {};
    const bool isCombined =
        PathCombineW(buffer, orNull(folder), orNull(name)) && path.Assign(WStringView(buffer));
    if (!isCombined) path.Free();
    return isCombined && !path.IsEmpty();
}

}  // namespace AUX
