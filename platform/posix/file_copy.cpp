#include "platform/posix/file_copy.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files.h"
#include "platform/posix/last_error.h"
#include "platform/scope_exit.h"

namespace platform {
namespace {

/// Copies what `source` holds. \return false with errno set.
bool CopyContent(int source, int target) noexcept {
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t got = read(source, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return got == 0;
        for (ssize_t done = 0; done < got;) {
            const ssize_t put =
                write(target, buffer.data() + done, static_cast<std::size_t>(got - done));
            if (put < 0 && errno != EINTR) return false;
            if (put > 0) done += put;
        }
    }
}

/// Copies permissions and times, as a move keeps them.
bool CopyStatus(int source, int target) noexcept {
    struct stat status {};
    if (fstat(source, &status) != 0 || fchmod(target, status.st_mode & 07777) != 0) return false;
    const timespec times[] = {status.st_atim, status.st_mtim};
    return futimens(target, times) == 0;
}

/// Puts the finished copy in place. \return false with errno set.
bool PutInPlace(const std::string& copy, const std::string& to, DWORD flags) noexcept {
    if (flags & MOVEFILE_REPLACE_EXISTING) return rename(copy.c_str(), to.c_str()) == 0;
    return renameat2(AT_FDCWD, copy.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

}  // namespace

DWORD CopyThenRemove(const std::string& from, const std::string& to, DWORD flags) noexcept {
    const int source = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (source < 0) return ErrorFromErrno(errno);
    const ScopeExit closingSource([&] { close(source); });
    std::string copy = to.substr(0, to.find_last_of('/') + 1) + ".move-XXXXXX";
    const int target = mkostemp(copy.data(), O_CLOEXEC);
    if (target < 0) return ErrorFromErrno(errno);
    const ScopeExit closingTarget([&] { close(target); });

    const bool mustFlush = (flags & MOVEFILE_WRITE_THROUGH) != 0;
    const bool isDone = CopyContent(source, target) && CopyStatus(source, target) &&
                        (!mustFlush || fsync(target) == 0) && PutInPlace(copy, to, flags);
    if (!isDone) {
        const DWORD error = ErrorFromErrno(errno);
        unlink(copy.c_str());
        return error;
    }
    // The file is in its new place; should the old name resist, two names are better than none.
    unlink(from.c_str());
    return ERROR_SUCCESS;
}

}  // namespace platform
