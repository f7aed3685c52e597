#pragma once

/// The object behind a file handle, and what the file calls share.

#include <atomic>
#include <string>
#include <sys/stat.h>

#include "platform/files.h"
#include "platform/posix/kernel_object.h"

namespace platform {

/// An open file. Owns the descriptor.
class FileObject : public KernelObject {
public:
    static constexpr KernelObjectKind kKind = KernelObjectKind::File;

    FileObject(int descriptor, DWORD access, bool isOverlapped) noexcept
        : KernelObject(kKind),
          descriptor_(descriptor),
          access_(access),
          overlapped_(isOverlapped) {}

    /// For what neither looks at the file pointer nor moves it.
    [[nodiscard]] int Descriptor() const noexcept { return descriptor_; }

    /// For what does: the descriptor's own position is the file pointer now.
    [[nodiscard]] int DescriptorAtPointer() noexcept;

    /// Sets the file pointer. The descriptor's position follows only when somebody asks for it, so
    /// that a run of positioned transfers costs one call of the system each.
    void SetPointer(off_t place) noexcept { pointer_.store(place, std::memory_order_relaxed); }

    [[nodiscard]] bool HasAccess(DWORD access) const noexcept { return (access_ & access) != 0; }
    /// The host's name of the file goes with this object.
    void DeleteAtEnd(std::string host) noexcept { deleted_ = std::move(host); }

    /// Whether it was opened with FILE_FLAG_OVERLAPPED.
    [[nodiscard]] bool IsOverlapped() const noexcept { return overlapped_; }

private:
    ~FileObject() override;

    const int descriptor_;
    const DWORD access_;  // GENERIC_READ and GENERIC_WRITE
    const bool overlapped_;
    std::string deleted_;
    static constexpr off_t kFollowed = -1;
    std::atomic<off_t> pointer_{kFollowed};  // what the descriptor's position has yet to become
};

/// A file time from the host's: 100 nanoseconds since 1601.
[[nodiscard]] FILETIME FileTimeOf(const timespec& time) noexcept;
[[nodiscard]] timespec HostTimeOf(const FILETIME& time) noexcept;

/// FILE_ATTRIBUTE_ flags of an lstat record; `host` is looked at again for a link.
[[nodiscard]] DWORD AttributesOf(const struct stat& status, const std::string& host) noexcept;

/// Whether a file is read-only as an attribute: nobody may write to it.
[[nodiscard]] inline bool IsReadOnly(const struct stat& status) noexcept {
    return S_ISREG(status.st_mode) && (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

}  // namespace platform
