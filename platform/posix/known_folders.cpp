#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

#include "platform/files.h"
#include "platform/posix/faults.h"
#include "platform/posix/last_error.h"
#include "platform/posix/module_table.h"
#include "platform/posix/paths.h"
#include "platform/posix/profile.h"
#include "platform/posix/profile_folder.h"
#include "platform/shell.h"

namespace platform {
namespace {

constexpr DWORD kFolderFlags = 0xFF00;  // of SHGetFolderPathW, beside the number of the folder

constexpr HRESULT ResultOf(DWORD error) noexcept {
    return static_cast<HRESULT>(0x80070000 | (error & 0xFFFF));
}

/// Makes a folder below the user's own and gives its path; the profile belongs to one user.
HRESULT UserFolder(const char* below, WideString& path) {
    const std::string drive = DriveFolder();
    if (drive.empty()) return ResultOf(GetLastError());
    const std::string host = drive + "/users/user/" + below;
    if (const int error = MakeFolders(host)) return ResultOf(ErrorFromErrno(error));
    return ToWindowsPath(host, path) ? S_OK : E_FAIL;
}

}  // namespace
}  // namespace platform

HRESULT SHGetKnownFolderPath(REFKNOWNFOLDERID id, DWORD, HANDLE, LPWSTR* path) noexcept {
    using namespace platform;
    if (!path) return E_INVALIDARG;
    *path = nullptr;
    if (InjectFault("SHGetKnownFolderPath")) return ResultOf(GetLastError());
    if (!(id == FOLDERID_LocalAppDataLow)) return ResultOf(ERROR_FILE_NOT_FOUND);
    WideString folder;
    if (const HRESULT result = UserFolder("AppData/LocalLow", folder)) return result;
    const std::size_t bytes = (folder.size() + 1) * sizeof(WCHAR);
    auto* text = static_cast<LPWSTR>(std::malloc(bytes));
    if (!text) return E_OUTOFMEMORY;
    std::memcpy(text, folder.c_str(), bytes);
    *path = text;
    return S_OK;
}

HRESULT SHGetFolderPathW(HWND, int folder, HANDLE, DWORD, LPWSTR path) noexcept {
    using namespace platform;
    if (!path) return E_INVALIDARG;
    path[0] = 0;
    if (InjectFault("SHGetFolderPathW")) return ResultOf(GetLastError());
    if ((static_cast<DWORD>(folder) & ~kFolderFlags) != CSIDL_LOCAL_APPDATA) return E_INVALIDARG;
    WideString found;
    if (const HRESULT result = UserFolder("AppData/Local", found)) return result;
    if (found.size() >= MAX_PATH) return ResultOf(ERROR_FILENAME_EXCED_RANGE);
    path[found.copy(path, MAX_PATH - 1)] = 0;
    return S_OK;
}

LPVOID CoTaskMemAlloc(SIZE_T size) noexcept { return std::malloc(size ? size : 1); }
void CoTaskMemFree(LPVOID block) noexcept { std::free(block); }

BOOL PathFileExistsW(LPCWSTR path) noexcept {
    using namespace platform;
    std::string host;
    struct stat status {};
    if (InjectFault("PathFileExistsW") || !HostPathOf(path, host)) return FALSE;
    return lstat(host.c_str(), &status) == 0 ? TRUE : FailPath(host);
}

DWORD_PTR SHGetFileInfoW(LPCWSTR path, DWORD, SHFILEINFOW* information, UINT bytes,
                         UINT flags) noexcept {
    if (flags != SHGFI_ATTRIBUTES || bytes < sizeof(SHFILEINFOW)) return 0;
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) return 0;
    *information = {};
    if (attributes & FILE_ATTRIBUTE_DIRECTORY) information->dwAttributes |= SFGAO_FOLDER;
    if (attributes & FILE_ATTRIBUTE_READONLY) information->dwAttributes |= SFGAO_READONLY;
    return 1;
}
