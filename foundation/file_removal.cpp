#include "foundation/file_removal.h"

#include "foundation/paths.h"
#include "foundation/wstring.h"
#include "platform/files.h"

namespace AUX {
namespace {

DWORD DeleteFolder(WString& path) noexcept;

DWORD DeleteFound(WString& path, DWORD attributes) noexcept {
    if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) return DeleteFileForced(path.Text());
    if (!(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) return DeleteFolder(path);
    WString scratch;
    return RemoveDirectoryW(ToLongPathForm(path.Text(), scratch)) ? NO_ERROR : GetLastError();
}

// Deletes what a search begun in the folder finds, from its first find on. `path` is the folder,
// with the names put behind it in turn, so that one text serves the whole tree.
DWORD DeleteContent(WString& path, HANDLE search, WIN32_FIND_DATAW& found) noexcept {
    const std::uint32_t length = path.Length();
    do {
        if (found.cFileName[0] == TEXT('.')) continue;
        if (!path.Append(TEXT("\\")) || !path.Append(found.cFileName)) {
            return ERROR_NOT_ENOUGH_MEMORY;
        }
        const DWORD error = DeleteFound(path, found.dwFileAttributes);
        (void)path.SetLength(length);  // Shorter never fails.
        if (error) return error;
    } while (FindNextFileW(search, &found));
    const DWORD error = GetLastError();
    return error == ERROR_NO_MORE_FILES ? NO_ERROR : error;
}

DWORD DeleteFolder(WString& path) noexcept {
    const std::uint32_t length = path.Length();
    WString scratch;
    WIN32_FIND_DATAW found = {};
    if (!path.Append(TEXT("\\*.*"))) return ERROR_NOT_ENOUGH_MEMORY;
    platform::FindHandle search(FindFirstFileW(ToLongPathForm(path.Text(), scratch), &found));
    (void)path.SetLength(length);
    if (!search) return NO_ERROR;
    if (const DWORD error = DeleteContent(path, search.Get(), found)) return error;
    search.Reset();  // An open search would hold the folder.
    const WCHAR* const systemPath = ToLongPathForm(path.Text(), scratch);
    (void)SetFileAttributesW(systemPath, FILE_ATTRIBUTE_NORMAL);  // The removal tells what failed.
    return RemoveDirectoryW(systemPath) ? NO_ERROR : GetLastError();
}

}  // namespace

DWORD DeleteFileForced(const WCHAR* path) noexcept {
    if (!path || !*path) return ERROR_PATH_NOT_FOUND;
    WString scratch;
    const WCHAR* const systemPath = ToLongPathForm(path, scratch);
    (void)SetFileAttributesW(systemPath, FILE_ATTRIBUTE_NORMAL);  // The deletion tells what failed.
    return DeleteFileW(systemPath) ? NO_ERROR : GetLastError();
}

DWORD DeleteFolderTree(const WCHAR* path) noexcept {
    // With the names behind it an empty path would be the root of the drive.
    if (!path || !*path) return NO_ERROR;
    WString text;
    return text.Append(path) ? DeleteFolder(text) : ERROR_NOT_ENOUGH_MEMORY;
}

}  // namespace AUX
