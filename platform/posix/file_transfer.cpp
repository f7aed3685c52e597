#include <cerrno>
#include <unistd.h>

#include "platform/posix/faults.h"
#include "platform/posix/file_object.h"
#include "platform/posix/last_error.h"
#include "platform/sync.h"

namespace platform {
namespace {

// What the fields of an OVERLAPPED hold (ntstatus.h).
constexpr ULONG_PTR kStatusPending = 0x103;
constexpr ULONG_PTR kStatusEndOfFile = 0xC0000011;
constexpr ULONG_PTR kStatusWin32 = 0xC0070000;

off_t OffsetOf(const OVERLAPPED& overlapped) noexcept {
    return static_cast<off_t>(ULONGLONG{overlapped.OffsetHigh} << 32 | overlapped.Offset);
}

struct Transfer {
    std::size_t bytes = 0;
    DWORD error = ERROR_SUCCESS;
};

/// Repeats `step(done)` until all is moved, it moves nothing, or it fails.
template <class Step>
Transfer Repeat(std::size_t bytes, Step step) noexcept {
    Transfer result;
    while (result.bytes < bytes) {
        const ssize_t moved = step(result.bytes);
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) result.error = ErrorFromErrno(errno);
        if (moved <= 0) break;
        result.bytes += static_cast<std::size_t>(moved);
    }
    return result;
}

/// Notes the outcome where the caller looks for it.
BOOL Finish(FileObject& file, Transfer result, LPDWORD count, LPOVERLAPPED overlapped) noexcept {
    const auto bytes = static_cast<DWORD>(result.bytes);
    if (count) *count = bytes;
    if (overlapped) {
        overlapped->InternalHigh = bytes;
        overlapped->Internal = result.error == ERROR_HANDLE_EOF ? kStatusEndOfFile
                               : result.error                   ? kStatusWin32 | result.error
                                                                : 0;
        // The file pointer of a handle without FILE_FLAG_OVERLAPPED follows positioned transfers
        // too.
        if (!file.IsOverlapped()) {
            file.SetPointer(OffsetOf(*overlapped) + static_cast<off_t>(bytes));
        }
        if (overlapped->hEvent) SetEvent(overlapped->hEvent);
    }
    return result.error ? Fail(result.error) : TRUE;
}

/// Checks what both directions check. \return the file, or null with the error code set.
ObjectRef<FileObject> Begin(HANDLE handle, DWORD access, LPDWORD count,
                            LPOVERLAPPED overlapped) noexcept {
    if (count) *count = 0;
    ObjectRef<FileObject> file = FindObject<FileObject>(handle);
    if (!file) return file;
    DWORD error = ERROR_SUCCESS;
    if (!file->HasAccess(access)) error = ERROR_ACCESS_DENIED;
    if (file->IsOverlapped() && !overlapped) error = ERROR_INVALID_PARAMETER;
    if (overlapped && OffsetOf(*overlapped) < 0) error = ERROR_INVALID_PARAMETER;
    if (error) {
        SetLastError(error);
        return {};
    }
    // No transfer outlives its call, so nobody could see its event reset.
    if (overlapped) overlapped->Internal = kStatusPending;
    return file;
}

}  // namespace

int FileObject::DescriptorAtPointer() noexcept {
    const off_t place = pointer_.exchange(kFollowed, std::memory_order_relaxed);
    if (place != kFollowed) (void)lseek(descriptor_, place, SEEK_SET);
    return descriptor_;
}

}  // namespace platform

BOOL ReadFile(HANDLE handle, LPVOID buffer, DWORD bytes, LPDWORD read,
              LPOVERLAPPED overlapped) noexcept {
    using namespace platform;
    const ObjectRef<FileObject> file = Begin(handle, GENERIC_READ, read, overlapped);
    if (!file) return FALSE;
    if (InjectFault("ReadFile")) {
        return Finish(*file.Get(), {0, GetLastError()}, read, overlapped);
    }
    const int descriptor = overlapped ? file->Descriptor() : file->DescriptorAtPointer();
    auto* target = static_cast<BYTE*>(buffer);
    Transfer result = Repeat(bytes, [&](std::size_t done) {
        return overlapped ? pread(descriptor, target + done, bytes - done,
                                  OffsetOf(*overlapped) + static_cast<off_t>(done))
                          : ::read(descriptor, target + done, bytes - done);
    });
    // What was moved before a failure counts; the next call meets the failure again.
    if (result.bytes > 0) result.error = ERROR_SUCCESS;
    const bool isAtEnd = bytes > 0 && result.bytes == 0 && !result.error;
    if (isAtEnd && overlapped) result.error = ERROR_HANDLE_EOF;
    return Finish(*file.Get(), result, read, overlapped);
}

BOOL WriteFile(HANDLE handle, LPCVOID buffer, DWORD bytes, LPDWORD written,
               LPOVERLAPPED overlapped) noexcept {
    using namespace platform;
    const ObjectRef<FileObject> file = Begin(handle, GENERIC_WRITE, written, overlapped);
    if (!file) return FALSE;
    if (InjectFault("WriteFile")) {
        return Finish(*file.Get(), {0, GetLastError()}, written, overlapped);
    }
    const int descriptor = overlapped ? file->Descriptor() : file->DescriptorAtPointer();
    const auto* source = static_cast<const BYTE*>(buffer);
    const Transfer result = Repeat(bytes, [&](std::size_t done) {
        return overlapped ? pwrite(descriptor, source + done, bytes - done,
                                   OffsetOf(*overlapped) + static_cast<off_t>(done))
                          : ::write(descriptor, source + done, bytes - done);
    });
    return Finish(*file.Get(), result, written, overlapped);
}

BOOL GetOverlappedResult(HANDLE handle, LPOVERLAPPED overlapped, LPDWORD bytes, BOOL) noexcept {
    using namespace platform;
    if (!FindObject<FileObject>(handle)) return FALSE;
    if (InjectFault("GetOverlappedResult")) return FALSE;
    // No transfer outlives its call, so there is nothing to wait for.
    if (overlapped->Internal == kStatusPending) return Fail(ERROR_IO_INCOMPLETE);
    *bytes = static_cast<DWORD>(overlapped->InternalHigh);
    if (overlapped->Internal == 0) return TRUE;
    return Fail(overlapped->Internal == kStatusEndOfFile
                    ? DWORD{ERROR_HANDLE_EOF}
                    : static_cast<DWORD>(overlapped->Internal & 0xFFFF));
}

BOOL SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, LARGE_INTEGER* position,
                      DWORD method) noexcept {
    using namespace platform;
    const ObjectRef<FileObject> file = FindObject<FileObject>(handle);
    if (!file || InjectFault("SetFilePointerEx")) return FALSE;
    if (method > FILE_END) return Fail(ERROR_INVALID_PARAMETER);
    constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    const off_t place = lseek(file->DescriptorAtPointer(), distance.QuadPart, kWhence[method]);
    if (place < 0) return errno == EINVAL ? Fail(ERROR_NEGATIVE_SEEK) : FailErrno();
    if (position) position->QuadPart = place;
    return TRUE;
}

BOOL SetEndOfFile(HANDLE handle) noexcept {
    using namespace platform;
    const ObjectRef<FileObject> file = FindObject<FileObject>(handle);
    if (!file || InjectFault("SetEndOfFile")) return FALSE;
    if (!file->HasAccess(GENERIC_WRITE)) return Fail(ERROR_ACCESS_DENIED);
    const off_t end = lseek(file->DescriptorAtPointer(), 0, SEEK_CUR);
    return end >= 0 && ftruncate(file->Descriptor(), end) == 0 ? TRUE : FailErrno();
}

BOOL FlushFileBuffers(HANDLE handle) noexcept {
    using namespace platform;
    const ObjectRef<FileObject> file = FindObject<FileObject>(handle);
    if (!file || InjectFault("FlushFileBuffers")) return FALSE;
    if (!file->HasAccess(GENERIC_WRITE)) return Fail(ERROR_ACCESS_DENIED);
    return fsync(file->Descriptor()) == 0 ? TRUE : FailErrno();
}
