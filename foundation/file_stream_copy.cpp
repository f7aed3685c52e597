// Copying into a file, through a small buffer.

#include <algorithm>

#include "foundation/file_stream.h"
#include "foundation/memory.h"
#include "platform/scope_exit.h"

namespace AUX {
namespace {

// Writes all of the buffer. A write that takes less is told by this one status, whatever it was.
Status WriteWhole(Stream& target, const char* buffer, std::int64_t length,
                  std::int64_t& count) noexcept {
    std::int64_t written = 0;
    (void)target.Write(buffer, length, written);
    count += written;
    return written == length ? kStatusOk : kStatusInternalError;
}

}  // namespace

Status FileStream::CopyFrom(Stream& source, SeekMode mode, std::int64_t offset, std::int64_t length,
                            std::int64_t& count) noexcept {
    count = 0;
    if (!IsOpen()) return kStatusNotInitialized;
    if (const Status status = NeedAccess(kAccessWrite)) return status;
    if (length < 1) return kStatusOk;
    char* const buffer =
        static_cast<char*>(Alloc(static_cast<std::size_t>(std::min(length, kCopyBuffer))));
    if (!buffer) return kStatusInsufficientMemory;
    const platform::ScopeExit freeBuffer([buffer] { Free(buffer); });
    const std::int64_t target = position;
    if (const Status status = source.Seek(mode, offset)) return status;
    const std::int64_t start = source.GetPosition();
    position = target;  // The source may be this very stream.
    if (IsSameStore(source)) {
        const std::int64_t available = std::min(length, store->size - start);
        return CopyWithin(source, start, available, length, buffer, count);
    }
    return CopyFromOther(source, length, buffer, count);
}

Status FileStream::CopyFromOther(Stream& source, std::int64_t length, char* buffer,
                                 std::int64_t& count) noexcept {
    while (count < length) {
        std::int64_t taken = 0;
        const Status readStatus = source.Read(buffer, std::min(length - count, kCopyBuffer), taken);
        const Status status = WriteWhole(*this, buffer, taken, count);
        if (IsFailure(status)) return status;
        if (IsFailure(readStatus)) return readStatus;
        if (taken == 0) return kStatusInternalError;  // A source that says neither more nor end.
    }
    return kStatusOk;
}

// Copies inside one file. Where the target lies behind the start, from the end backwards, so that
// an overlap does not overwrite what is still to be copied.
Status FileStream::CopyWithin(Stream& source, std::int64_t start, std::int64_t available,
                              std::int64_t length, char* buffer, std::int64_t& count) noexcept {
    const std::int64_t target = position;
    const bool isBackward = target > start && target < start + available;
    Status status = kStatusOk;
    while (count < available && !IsFailure(status)) {
        const std::int64_t chunk = std::min(available - count, kCopyBuffer);
        const std::int64_t at = isBackward ? available - count - chunk : count;
        std::int64_t taken = 0;
        status = source.ReadAt(buffer, chunk, SeekMode::Start, start + at, taken);
        if (!IsFailure(status) && taken < chunk) status = kStatusInternalError;
        if (IsFailure(status)) break;
        MoveTo(target + at);
        status = WriteWhole(*this, buffer, chunk, count);
    }
    // What a broken copy from behind has moved is nothing to go on from.
    if (IsFailure(status) && isBackward) count = 0;
    (void)source.Seek(SeekMode::Start, start + count);
    MoveTo(target + count);
    if (IsFailure(status)) return status;
    return count < length ? kStatusEndOfData : kStatusOk;
}

}  // namespace AUX
