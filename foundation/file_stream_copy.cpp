// Copying into a file, through a small buffer.

#include <algorithm>

#include "foundation/file_stream.h"

namespace AUX {
namespace {

constexpr std::int64_t kBuffer = 4096;

// What is left of the result of a write after a read that gave `wanted` bytes.
Status WriteResult(Status status, std::int64_t written, std::int64_t wanted) noexcept {
    if (written < wanted) return IsFailure(status) ? status : kStatusInternalError;
    return status;
}

}  // namespace

Status FileStream::CopyFromOther(Stream& source, std::int64_t length, char* buffer,
                                 std::int64_t& count) noexcept {
    while (count < length) {
        std::int64_t taken = 0;
        const Status readStatus = source.Read(buffer, std::min(length - count, kBuffer), taken);
        std::int64_t written = 0;
        const Status status = WriteResult(Write(buffer, taken, written), written, taken);
        count += written;
        if (IsFailure(status)) return status;
        if (IsFailure(readStatus)) return readStatus;
    }
    return kStatusOk;
}

// Copies inside one file. Where the target lies behind the start, from the end backwards, so that
// an overlap does not overwrite what is still to be copied.
Status FileStream::CopyWithin(Stream& source, std::int64_t start, std::int64_t length, char* buffer,
                              std::int64_t& count) noexcept {
    const std::int64_t target = position;
    const std::int64_t available = std::min(length, store->size - start);
    const bool isBackward = target > start && target < start + available;
    Status status = kStatusOk;
    while (count < available && !IsFailure(status)) {
        const std::int64_t chunk = std::min(available - count, kBuffer);
        const std::int64_t at = isBackward ? available - count - chunk : count;
        std::int64_t taken = 0;
        status = source.ReadAt(buffer, chunk, SeekMode::Start, start + at, taken);
        if (!IsFailure(status) && taken < chunk) status = kStatusInternalError;
        if (IsFailure(status)) break;
        std::int64_t written = 0;
        position = target + at;
        status = WriteResult(Write(buffer, chunk, written), written, chunk);
        count += written;
    }
    (void)source.Seek(SeekMode::Start, start + count);
    position = target + count;
    if (IsFailure(status)) return status;
    return count < length ? kStatusEndOfData : kStatusOk;
}

}  // namespace AUX
