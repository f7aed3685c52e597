#include "platform/posix/file_sharing.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

#include "platform/files.h"
#include "platform/posix/last_error.h"

namespace platform {
namespace {

// Far behind any content. A holder has a shared lock on a byte for each access that it has and each
// that it refuses to others; so one range of six bytes says who is in conflict with whom.
constexpr off_t kFirstByte = 0x7000000000000000;
constexpr off_t kAccessByte = kFirstByte;       // + kind
constexpr off_t kRefusalByte = kFirstByte + 3;  // + kind
constexpr int kKinds = 3;                       // read, write, delete
constexpr int kAttempts = 4;

bool SetLock(int descriptor, short type, off_t first, off_t count) noexcept {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = first;
    lock.l_len = count;
    return fcntl(descriptor, F_OFD_SETLK, &lock) == 0;
}

/// Whether another open file has a lock on the byte.
bool IsLocked(int descriptor, off_t byte) noexcept {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

bool Has(const ShareClaim& claim, int kind) noexcept {
    return kind == 0 ? claim.reads : kind == 1 ? claim.writes : claim.deletes;
}

bool Refuses(const ShareClaim& claim, int kind) noexcept {
    return (claim.share & (FILE_SHARE_READ << kind)) == 0;
}

bool IsInConflict(int descriptor, const ShareClaim& claim) noexcept {
    for (int kind = 0; kind < kKinds; ++kind) {
        if (Has(claim, kind) && IsLocked(descriptor, kRefusalByte + kind)) return true;
        if (Refuses(claim, kind) && IsLocked(descriptor, kAccessByte + kind)) return true;
    }
    return false;
}

}  // namespace

bool ClaimFile(int descriptor, const ShareClaim& claim) noexcept {
    // An open without any access neither refuses anything nor is refused.
    if (!claim.reads && !claim.writes && !claim.deletes) return true;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        // First the own locks, then the look at the others': two that come at once both see each
        // other, so one of them may have to try again but they never both pass.
        for (int kind = 0; kind < kKinds; ++kind) {
            if (Has(claim, kind)) (void)SetLock(descriptor, F_RDLCK, kAccessByte + kind, 1);
            if (Refuses(claim, kind)) (void)SetLock(descriptor, F_RDLCK, kRefusalByte + kind, 1);
        }
        if (!IsInConflict(descriptor, claim)) return true;
        (void)SetLock(descriptor, F_UNLCK, kFirstByte, 2 * kKinds);
        // Uneven pauses let one of two equals go first.
        std::this_thread::sleep_for(std::chrono::microseconds(50 + (getpid() + gettid()) % 7 * 50));
    }
    return Fail(ERROR_SHARING_VIOLATION) != FALSE;
}

bool IsHeldAgainstDeletion(const std::string& host) noexcept {
    const int descriptor =
        open(host.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY);
    if (descriptor < 0) return false;
    const bool isHeld = IsLocked(descriptor, kRefusalByte + 2);
    close(descriptor);
    return isHeld;
}

}  // namespace platform
