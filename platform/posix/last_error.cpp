#include "platform/posix/last_error.h"

#include <cerrno>

namespace {
// A plain number: it needs no destructor when a thread ends.
thread_local DWORD lastError = 0;
}  // namespace

DWORD GetLastError() noexcept { return lastError; }

void SetLastError(DWORD error) noexcept { lastError = error; }

namespace platform {

DWORD ErrorFromErrno(int error) noexcept {
    switch (error) {
        case 0:
            return ERROR_SUCCESS;
        case ENOENT:
            return ERROR_FILE_NOT_FOUND;
        case ENOTDIR:
            return ERROR_PATH_NOT_FOUND;
        case ELOOP:
            return ERROR_PATH_NOT_FOUND;
        case EMFILE:
        case ENFILE:
            return ERROR_TOO_MANY_OPEN_FILES;
        case EACCES:
        case EPERM:
        case EISDIR:
            return ERROR_ACCESS_DENIED;
        case EBADF:
            return ERROR_INVALID_HANDLE;
        case ENOMEM:
            return ERROR_NOT_ENOUGH_MEMORY;
        case EXDEV:
            return ERROR_NOT_SAME_DEVICE;
        case EROFS:
            return ERROR_WRITE_PROTECT;
        case EBUSY:
        case ETXTBSY:
            return ERROR_SHARING_VIOLATION;
        case EEXIST:
            return ERROR_ALREADY_EXISTS;
        case EINVAL:
            return ERROR_INVALID_PARAMETER;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return ERROR_DISK_FULL;
        case ENAMETOOLONG:
            return ERROR_FILENAME_EXCED_RANGE;
        case ENOTEMPTY:
            return ERROR_DIR_NOT_EMPTY;
        case EFAULT:
            return ERROR_NOACCESS;
        default:
            return ERROR_GEN_FAILURE;
    }
}

BOOL Fail(DWORD error) noexcept {
    SetLastError(error);
    return FALSE;
}

BOOL FailErrno() noexcept { return Fail(ErrorFromErrno(errno)); }

}  // namespace platform
