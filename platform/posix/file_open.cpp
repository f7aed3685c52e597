#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <new>
#include <unistd.h>

#include "platform/posix/faults.h"
#include "platform/posix/file_object.h"
#include "platform/posix/file_sharing.h"
#include "platform/posix/last_error.h"
#include "platform/posix/paths.h"
#include "platform/scope_exit.h"

namespace platform {
namespace {

constexpr DWORD kNoAccess = 0;

/// A write beyond the process's file size limit shall be an error and not the end of the process.
void TakeSizeLimitAsError() {
    static std::once_flag once;
    std::call_once(once, [] {
        struct sigaction present {};
        if (sigaction(SIGXFSZ, nullptr, &present) == 0 && present.sa_handler == SIG_DFL) {
            std::signal(SIGXFSZ, SIG_IGN);
        }
    });
}

int OpenHost(const std::string& host, int flags, mode_t mode) {
    // Without O_NONBLOCK the open of a pipe file waits for its other end.
    int descriptor = -1;
    do {
        descriptor = open(host.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

/// Opens what exists. Share locks need a descriptor that can read, so that is asked for first.
int OpenExisting(const std::string& host, DWORD access) {
    if (access == kNoAccess) {
        const int descriptor = OpenHost(host, O_RDONLY, 0);
        return descriptor < 0 && errno == EACCES ? OpenHost(host, O_PATH, 0) : descriptor;
    }
    if (!(access & GENERIC_WRITE)) return OpenHost(host, O_RDONLY, 0);
    const int descriptor = OpenHost(host, O_RDWR, 0);
    const bool mayOnlyWrite = descriptor < 0 && errno == EACCES && !(access & GENERIC_READ);
    return mayOnlyWrite ? OpenHost(host, O_WRONLY, 0) : descriptor;
}

struct Opened {
    int descriptor = -1;
    bool isNew = false;
};

/// Opens or makes the file. \return the error code, 0 on success.
DWORD OpenByDisposition(const std::string& host, DWORD access, DWORD disposition, mode_t mode,
                        Opened& opened) {
    const bool mayMake = disposition != OPEN_EXISTING && disposition != TRUNCATE_EXISTING;
    // Another program may remove or make the file between the two tries, so they are repeated.
    for (int attempt = 0; attempt < 10; ++attempt) {
        if (mayMake) {
            opened.descriptor = OpenHost(host, O_RDWR | O_CREAT | O_EXCL, mode);
            opened.isNew = opened.descriptor >= 0;
            if (opened.isNew) return ERROR_SUCCESS;
            if (errno != EEXIST && errno != EISDIR) return PathError(errno, host);
            if (disposition == CREATE_NEW) return ERROR_FILE_EXISTS;
        }
        opened.descriptor = OpenExisting(host, access);
        if (opened.descriptor >= 0) return ERROR_SUCCESS;
        if (errno != ENOENT || !mayMake) break;
    }
    return PathError(errno, host);
}

/// Checks and empties what was opened. \return the error code, 0 on success.
DWORD Admit(const Opened& opened, DWORD access, const ShareClaim& claim, bool truncates) {
    struct stat status {};
    if (fstat(opened.descriptor, &status) != 0) return ErrorFromErrno(errno);
    if (S_ISDIR(status.st_mode)) return ERROR_ACCESS_DENIED;
    // Root may write to anything; a read-only file binds it all the same.
    if (!opened.isNew && (access & GENERIC_WRITE) && IsReadOnly(status)) return ERROR_ACCESS_DENIED;
    if (S_ISREG(status.st_mode) && !ClaimFile(opened.descriptor, claim)) {
        return ERROR_SHARING_VIOLATION;
    }
    if (truncates && !opened.isNew && ftruncate(opened.descriptor, 0) != 0) {
        return ErrorFromErrno(errno);
    }
    return ERROR_SUCCESS;
}

HANDLE FailOpen(DWORD error) {
    SetLastError(error);
    return INVALID_HANDLE_VALUE;
}

}  // namespace

FileObject::~FileObject() {
    if (!deleted_.empty()) unlink(deleted_.c_str());
    close(descriptor_);
}

}  // namespace platform

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES,
                   DWORD disposition, DWORD flags, HANDLE) noexcept {
    using namespace platform;
    std::string host;
    if (InjectFault("CreateFileW") || !HostPathOf(path, host)) return INVALID_HANDLE_VALUE;
    if (disposition < CREATE_NEW || disposition > TRUNCATE_EXISTING) {
        return FailOpen(ERROR_INVALID_PARAMETER);
    }
    if (disposition == TRUNCATE_EXISTING && !(access & GENERIC_WRITE)) {
        return FailOpen(ERROR_INVALID_PARAMETER);
    }
    // A name with a separator at its end can only be a folder.
    if (host.back() == '/') return FailOpen(ERROR_PATH_NOT_FOUND);
    access &= GENERIC_READ | GENERIC_WRITE;
    const bool truncates = disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING;
    const DWORD needed = truncates ? access | GENERIC_WRITE : access;
    if (needed & GENERIC_WRITE) TakeSizeLimitAsError();

    Opened opened;
    const mode_t mode = flags & FILE_ATTRIBUTE_READONLY ? 0444 : 0666;
    if (const DWORD error = OpenByDisposition(host, needed, disposition, mode, opened)) {
        return FailOpen(error);
    }
    ScopeExit closing([&] { close(opened.descriptor); });
    const ShareClaim claim{(access & GENERIC_READ) != 0, (access & GENERIC_WRITE) != 0, false,
                           share};
    if (const DWORD error = Admit(opened, needed, claim, truncates)) return FailOpen(error);

    auto* file = new (std::nothrow)
        FileObject(opened.descriptor, access, (flags & FILE_FLAG_OVERLAPPED) != 0);
    if (file) closing.Release();  // The object closes it from here on.
    if (file && (flags & FILE_FLAG_DELETE_ON_CLOSE)) file->DeleteAtEnd(host);
    const HANDLE handle = OpenHandle(file);
    if (!handle) return INVALID_HANDLE_VALUE;
    const bool tellsExisting = disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
    SetLastError(tellsExisting && !opened.isNew ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}
