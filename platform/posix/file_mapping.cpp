#include "platform/posix/file_mapping.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/posix/last_error.h"

namespace platform {

FileMapping::FileMapping(ObjectRef<FileObject> file, bool isWritable, std::uint64_t size) noexcept
    : file_(std::move(file)), isWritable_(isWritable), size_(size) {}

FileMapping::~FileMapping() {
    if (whole_) munmap(whole_, size_);
}

void* FileMapping::MapPart(std::uint64_t offset, SIZE_T size) const noexcept {
    const int protection = isWritable_ ? PROT_READ | PROT_WRITE : PROT_READ;
    void* const part = mmap(nullptr, size, protection, MAP_SHARED, file_->Descriptor(),
                            static_cast<off_t>(offset));
    return part == MAP_FAILED ? nullptr : part;
}

char* FileMapping::Whole() noexcept {
    const std::lock_guard guard(lock_);
    if (!whole_) whole_ = static_cast<char*>(MapPart(0, size_));
    return whole_;
}

DWORD FileMapping::Lengthen(const FileObject& file, std::uint64_t from, std::uint64_t to) noexcept {
    const int descriptor = file.Descriptor();
    const auto start = static_cast<off_t>(from);
    int result = 0;
    do {
        result = fallocate(descriptor, 0, start, static_cast<off_t>(to) - start);
    } while (result != 0 && errno == EINTR);
    if (result == 0) return ERROR_SUCCESS;
    // A file system that cannot promise room: then a full disk shows when bytes are written.
    if ((errno == EOPNOTSUPP || errno == ENOSYS) &&
        ftruncate(descriptor, static_cast<off_t>(to)) == 0) {
        return ERROR_SUCCESS;
    }
    const DWORD error = ErrorFromErrno(errno);
    (void)!ftruncate(descriptor, start);
    return error;
}

}  // namespace platform
