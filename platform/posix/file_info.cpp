#include <cerrno>
#include <cstring>
#include <sys/stat.h>

#include "platform/posix/faults.h"
#include "platform/posix/file_object.h"
#include "platform/posix/last_error.h"
#include "platform/posix/paths.h"

namespace platform {
namespace {

constexpr LONGLONG kTicksPerSecond = 10'000'000;
constexpr LONGLONG kSecondsFrom1601To1970 = 11'644'473'600;

constexpr mode_t kAllMayWrite = S_IWUSR | S_IWGRP | S_IWOTH;

DWORD HighHalf(ULONGLONG value) noexcept { return static_cast<DWORD>(value >> 32); }
DWORD LowHalf(ULONGLONG value) noexcept { return static_cast<DWORD>(value); }

/// Gives the record of a handle, or FALSE with the error code set.
bool StatusOf(HANDLE handle, const char* call, struct stat& status) noexcept {
    const ObjectRef<FileObject> file = FindObject<FileObject>(handle);
    if (!file || InjectFault(call)) return false;
    return fstat(file->Descriptor(), &status) == 0 || FailErrno() != FALSE;
}

}  // namespace

FILETIME FileTimeOf(const timespec& time) noexcept {
    const LONGLONG ticks =
        (time.tv_sec + kSecondsFrom1601To1970) * kTicksPerSecond + time.tv_nsec / 100;
    const auto value = static_cast<ULONGLONG>(ticks < 0 ? 0 : ticks);
    return {LowHalf(value), HighHalf(value)};
}

timespec HostTimeOf(const FILETIME& time) noexcept {
    const ULONGLONG ticks = ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    const auto seconds = static_cast<LONGLONG>(ticks / kTicksPerSecond);
    return {seconds - kSecondsFrom1601To1970, static_cast<LONGLONG>(ticks % kTicksPerSecond) * 100};
}

DWORD AttributesOf(const struct stat& status, const std::string& host) noexcept {
    DWORD attributes = 0;
    if (S_ISLNK(status.st_mode)) {
        attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
        struct stat target {};
        if (stat(host.c_str(), &target) == 0 && S_ISDIR(target.st_mode)) {
            attributes |= FILE_ATTRIBUTE_DIRECTORY;
        }
    }
    if (S_ISDIR(status.st_mode)) attributes |= FILE_ATTRIBUTE_DIRECTORY;
    if (IsReadOnly(status)) attributes |= FILE_ATTRIBUTE_READONLY;
    return attributes ? attributes : FILE_ATTRIBUTE_NORMAL;
}

}  // namespace platform

BOOL GetFileSizeEx(HANDLE handle, LARGE_INTEGER* size) noexcept {
    struct stat status {};
    if (!platform::StatusOf(handle, "GetFileSizeEx", status)) return FALSE;
    size->QuadPart = status.st_size;
    return TRUE;
}

BOOL GetFileTime(HANDLE handle, FILETIME* creation, FILETIME* access, FILETIME* write) noexcept {
    struct stat status {};
    if (!platform::StatusOf(handle, "GetFileTime", status)) return FALSE;
    if (creation) *creation = platform::FileTimeOf(status.st_ctim);
    if (access) *access = platform::FileTimeOf(status.st_atim);
    if (write) *write = platform::FileTimeOf(status.st_mtim);
    return TRUE;
}

BOOL GetFileInformationByHandle(HANDLE handle, BY_HANDLE_FILE_INFORMATION* information) noexcept {
    using namespace platform;
    struct stat status {};
    if (!StatusOf(handle, "GetFileInformationByHandle", status)) return FALSE;
    const auto size = static_cast<ULONGLONG>(status.st_size);
    *information = {};
    information->dwFileAttributes = AttributesOf(status, {});
    information->ftCreationTime = FileTimeOf(status.st_ctim);
    information->ftLastAccessTime = FileTimeOf(status.st_atim);
    information->ftLastWriteTime = FileTimeOf(status.st_mtim);
    information->dwVolumeSerialNumber = LowHalf(status.st_dev);
    information->nFileSizeHigh = HighHalf(size);
    information->nFileSizeLow = LowHalf(size);
    information->nNumberOfLinks = static_cast<DWORD>(status.st_nlink);
    information->nFileIndexHigh = HighHalf(status.st_ino);
    information->nFileIndexLow = LowHalf(status.st_ino);
    return TRUE;
}

BOOL GetFileInformationByHandleEx(HANDLE handle, FILE_INFO_BY_HANDLE_CLASS kind, LPVOID information,
                                  DWORD bytes) noexcept {
    using namespace platform;
    if (kind != FileIdInfo) return Fail(ERROR_INVALID_PARAMETER);
    if (bytes < sizeof(FILE_ID_INFO)) return Fail(ERROR_BAD_LENGTH);
    struct stat status {};
    if (!StatusOf(handle, "GetFileInformationByHandleEx", status)) return FALSE;
    FILE_ID_INFO identity{status.st_dev, {}};
    const ULONGLONG index = status.st_ino;
    std::memcpy(identity.FileId.Identifier, &index, sizeof index);
    std::memcpy(information, &identity, sizeof identity);
    return TRUE;
}

DWORD GetFileAttributesW(LPCWSTR path) noexcept {
    using namespace platform;
    std::string host;
    struct stat status {};
    if (InjectFault("GetFileAttributesW") || !HostPathOf(path, host))
        return INVALID_FILE_ATTRIBUTES;
    if (lstat(host.c_str(), &status) != 0) {
        FailPath(host);
        return INVALID_FILE_ATTRIBUTES;
    }
    return AttributesOf(status, host);
}

BOOL SetFileAttributesW(LPCWSTR path, DWORD attributes) noexcept {
    using namespace platform;
    std::string host;
    struct stat status {};
    if (InjectFault("SetFileAttributesW") || !HostPathOf(path, host)) return FALSE;
    if (lstat(host.c_str(), &status) != 0) return FailPath(host);
    // Only a file has the attribute; a folder's permissions and a link's target are left alone.
    const bool readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (!S_ISREG(status.st_mode) || IsReadOnly(status) == readOnly) return TRUE;
    const mode_t permissions = status.st_mode & 07777;
    const mode_t changed = readOnly ? permissions & ~kAllMayWrite : permissions | S_IWUSR;
    return chmod(host.c_str(), changed) == 0 ? TRUE : FailPath(host);
}
