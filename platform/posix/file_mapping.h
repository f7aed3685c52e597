#pragma once

/// A file as memory.

#include <mutex>

#include "platform/posix/file_object.h"

namespace platform {

/// What a mapping of a file keeps. The file is mapped whole at the first view, where the address
/// space has room for it, and views are windows of that: to take and to give back one costs no call
/// of the system, and pages that were read once stay at hand.
class FileMapping {
public:
    FileMapping(ObjectRef<FileObject> file, bool isWritable, std::uint64_t size) noexcept;
    ~FileMapping();
    FileMapping(const FileMapping&) = delete;
    FileMapping& operator=(const FileMapping&) = delete;

    [[nodiscard]] std::uint64_t Size() const noexcept { return size_; }
    [[nodiscard]] bool IsWritable() const noexcept { return isWritable_; }

    /// The whole file's first byte; null if it cannot be mapped whole.
    [[nodiscard]] char* Whole() noexcept;

    /// Maps a part on its own; `munmap` ends it. \return null with errno set.
    [[nodiscard]] void* MapPart(std::uint64_t offset, SIZE_T size) const noexcept;

    /// Makes the file as long as the mapping, and takes the room on the disk. \return the error
    /// code.
    [[nodiscard]] static DWORD Lengthen(const FileObject& file, std::uint64_t from,
                                        std::uint64_t to) noexcept;

private:
    const ObjectRef<FileObject> file_;
    const bool isWritable_;
    const std::uint64_t size_;
    std::mutex lock_;
    char* whole_ = nullptr;
};

}  // namespace platform
