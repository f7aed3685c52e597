#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/faults.h"
#include "platform/posix/file_copy.h"
#include "platform/posix/file_object.h"
#include "platform/posix/file_sharing.h"
#include "platform/posix/last_error.h"
#include "platform/posix/paths.h"

namespace platform {
namespace {

/// Has the folder's entry reach the disk.
void FlushFolderOf(const std::string& host) noexcept {
    const std::string folder = host.substr(0, host.find_last_of('/') + 1);
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    (void)fsync(descriptor);
    close(descriptor);
}

/// Whether `target` may be replaced. \return the error code, 0 if it may.
DWORD ErrorOfReplacing(const struct stat& source, const std::string& target, DWORD flags) noexcept {
    struct stat status {};
    if (lstat(target.c_str(), &status) != 0) return ERROR_SUCCESS;
    if (!(flags & MOVEFILE_REPLACE_EXISTING)) return ERROR_ALREADY_EXISTS;
    const bool mayBeReplaced = !S_ISDIR(status.st_mode) && !S_ISDIR(source.st_mode) &&
                               !IsReadOnly(status) && !IsHeldAgainstDeletion(target);
    return mayBeReplaced ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

int Rename(const std::string& from, const std::string& to, DWORD flags) noexcept {
    if (flags & MOVEFILE_REPLACE_EXISTING) return rename(from.c_str(), to.c_str());
    const int result = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
    // Not every file system can refuse in the same step; the caller has just looked.
    return result != 0 && errno == EINVAL ? rename(from.c_str(), to.c_str()) : result;
}

/// The last step of a move. \return the error code, 0 on success.
DWORD MoveChecked(const std::string& from, const struct stat& source, const std::string& to,
                  DWORD flags) noexcept {
    if (Rename(from, to, flags) == 0) return ERROR_SUCCESS;
    if (errno == ENOENT)
        return ERROR_PATH_NOT_FOUND;  // The source was there, so a folder of `to` is not.
    if (errno != EXDEV) return ErrorFromErrno(errno);
    if (!(flags & MOVEFILE_COPY_ALLOWED)) return ERROR_NOT_SAME_DEVICE;
    if (!S_ISREG(source.st_mode)) return ERROR_ACCESS_DENIED;
    return CopyThenRemove(from, to, flags);
}

}  // namespace
}  // namespace platform

BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) noexcept {
    using namespace platform;
    std::string source;
    std::string target;
    if (InjectFault("MoveFileExW")) return FALSE;
    if (!HostPathOf(from, source) || !HostPathOf(to, target)) return FALSE;
    struct stat status {};
    if (lstat(source.c_str(), &status) != 0) return FailPath(source);
    if (IsHeldAgainstDeletion(source)) return Fail(ERROR_SHARING_VIOLATION);
    if (source == target) return TRUE;
    if (const DWORD error = ErrorOfReplacing(status, target, flags)) return Fail(error);
    if (const DWORD error = MoveChecked(source, status, target, flags)) return Fail(error);
    if (flags & MOVEFILE_WRITE_THROUGH) FlushFolderOf(target);
    return TRUE;
}

BOOL DeleteFileW(LPCWSTR path) noexcept {
    using namespace platform;
    std::string host;
    struct stat status {};
    if (InjectFault("DeleteFileW") || !HostPathOf(path, host)) return FALSE;
    if (lstat(host.c_str(), &status) != 0) return FailPath(host);
    if (S_ISDIR(status.st_mode) || IsReadOnly(status)) return Fail(ERROR_ACCESS_DENIED);
    if (IsHeldAgainstDeletion(host)) return Fail(ERROR_SHARING_VIOLATION);
    return unlink(host.c_str()) == 0 ? TRUE : FailPath(host);
}

BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES) noexcept {
    using namespace platform;
    std::string host;
    if (InjectFault("CreateDirectoryW") || !HostPathOf(path, host)) return FALSE;
    if (mkdir(host.c_str(), 0777) == 0) return TRUE;
    // A missing parent, even where the new folder's own name would be "not found".
    return errno == ENOENT ? Fail(ERROR_PATH_NOT_FOUND) : FailErrno();
}

BOOL RemoveDirectoryW(LPCWSTR path) noexcept {
    using namespace platform;
    std::string host;
    struct stat status {};
    if (InjectFault("RemoveDirectoryW") || !HostPathOf(path, host)) return FALSE;
    while (host.size() > 1 && host.back() == '/') host.pop_back();
    if (lstat(host.c_str(), &status) != 0) return FailPath(host);
    const bool isLink = S_ISLNK(status.st_mode);
    if (!(AttributesOf(status, host) & FILE_ATTRIBUTE_DIRECTORY)) return Fail(ERROR_DIRECTORY);
    if ((isLink ? unlink(host.c_str()) : rmdir(host.c_str())) == 0) return TRUE;
    return errno == EEXIST ? Fail(ERROR_DIR_NOT_EMPTY) : FailPath(host);
}
