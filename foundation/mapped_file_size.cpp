// The size of a mapped file, and copying into it.

#include <algorithm>

#include "foundation/mapped_file_stream.h"
#include "foundation/memory.h"
#include "platform/guarded_copy.h"
#include "platform/scope_exit.h"

namespace AUX {

// Ends the mapping and makes one of `bytes`. After a failure, of this or an earlier step, the one
// that there was is made again, or, if that fails too, the stream is closed.
Status MappedFileStream::Remap(std::int64_t bytes, Status first) noexcept {
    const std::int64_t before = store->allocated;
    if (!IsFailure(first)) first = Mapped()->MapBytes(bytes);
    if (!IsFailure(first)) return kStatusOk;
    const Status second = Mapped()->MapBytes(before);
    if (!IsFailure(second)) return first;
    (void)Close();
    return second;
}

// Lengthens the mapping to whole granules behind `end`.
Status MappedFileStream::MakeRoom(std::int64_t end) noexcept {
    const std::int64_t granule = Mapped()->granularity;
    if (end > INT64_MAX - granule) return kStatusInvalidArgument;
    Mapped()->UnmapViews();
    (void)Mapped()->CloseMapping();
    return Remap(end - end % granule + granule, kStatusOk);
}

// Makes sure that the file holds zeros in a part that becomes content.
Status MappedFileStream::PutZeros(std::int64_t from, std::int64_t to) noexcept {
    static constexpr char kZeros[4096] = {};
    const std::int64_t end = std::min(to, Mapped()->dirtyEnd);
    if (from >= end) return kStatusOk;
    const std::int64_t before = position;
    const std::int64_t size = store->size;
    Status status = kStatusOk;
    MoveTo(from);
    while (position < end && !IsFailure(status)) {
        std::int64_t done = 0;
        status = PutBytes(kZeros, std::min<std::int64_t>(end - position, sizeof kZeros), done);
    }
    store->size = size;
    MoveTo(before);
    return status;
}

Status MappedFileStream::SetSize(std::int64_t newSize) noexcept {
    if (!IsOpen()) return kStatusNotInitialized;
    if (newSize < 0) return kStatusInvalidArgument;
    if (const Status status = NeedAccess(kAccessWrite)) return status;
    if (newSize > store->allocated) {
        if (const Status status = MakeRoom(newSize)) return status;
    }
    if (const Status status = PutZeros(store->size, newSize)) return status;
    store->size = newSize;
    Mapped()->dirtyEnd = std::max(Mapped()->dirtyEnd, newSize);
    MoveTo(std::min(position, newSize));
    return kStatusOk;
}

Status MappedFileStream::Compact() noexcept {
    if (!IsOpen()) return kStatusNotInitialized;
    if (const Status status = NeedAccess(kAccessWrite)) return status;
    if (store->size < store->allocated) {
        Mapped()->UnmapViews();
        (void)Mapped()->CloseMapping();
        const bool isFlushed = FlushFileBuffers(Mapped()->handle.Get()) != FALSE;
        const Status flushed = isFlushed ? kStatusOk : StatusFromFailedCall(GetLastError());
        const Status cut = Mapped()->SetEnd(store->size);
        if (!IsFailure(cut)) Mapped()->dirtyEnd = store->size;
        const std::int64_t bytes = std::max<std::int64_t>(store->size, 1);
        if (const Status status = Remap(bytes, cut)) return status;
        MoveTo(position);
        if (IsFailure(flushed)) return flushed;
    }
    return ReleaseView();
}

// Reads from the source straight into the view, of which `room` bytes are left at least.
Status MappedFileStream::TakeBytes(Stream& source, std::int64_t room,
                                   std::int64_t& taken) noexcept {
    const char* const bytes = static_cast<const char*>(source.GetData());
    // A file's bytes come from the system, or from a guarded copy, which tell of a lost view.
    if (!bytes) {
        const Status status = source.Read(At(), room, taken);
        return status == StatusFromSystemError(ERROR_NOACCESS) ? kStatusWriteFailed : status;
    }
    std::int64_t none = 0;
    if (const Status status = source.Read(nullptr, 0, none)) return status;  // It may not be read.
    const std::int64_t place = source.GetPosition();
    const std::int64_t part = std::min(room, source.GetSize() - place);
    if (part <= 0) return kStatusEndOfData;
    const auto outcome = platform::GuardedCopy(At(), bytes + place, static_cast<std::size_t>(part));
    if (outcome == platform::CopyOutcome::TargetLost) return kStatusWriteFailed;
    if (outcome != platform::CopyOutcome::Done) return StatusFromSystemError(ERROR_NOACCESS);
    taken = part;
    return source.Seek(SeekMode::Position, part);
}

Status MappedFileStream::CopyFromOther(Stream& source, std::int64_t length,
                                       std::int64_t& count) noexcept {
    while (count < length) {
        if (const Status status = MapView()) return status;
        const std::int64_t room = std::min<std::int64_t>(length - count, viewLeft);
        std::int64_t taken = 0;
        const Status status = TakeBytes(source, room, taken);
        count += taken;
        Advance(taken);
        if (IsFailure(status)) return status;
        if (taken == 0) return kStatusInternalError;  // A source that says neither more nor end.
    }
    return kStatusOk;
}

Status MappedFileStream::CopyFrom(Stream& source, SeekMode mode, std::int64_t offset,
                                  std::int64_t length, std::int64_t& count) noexcept {
    count = 0;
    if (!IsOpen()) return kStatusNotInitialized;
    if (const Status status = NeedAccess(kAccessWrite)) return status;
    if (length < 1) return kStatusOk;
    const std::int64_t target = position;
    if (length > INT64_MAX - target) return kStatusInvalidArgument;
    if (const Status status = source.Seek(mode, offset)) return status;
    const std::int64_t start = source.GetPosition();
    MoveTo(target);  // The source may be this very stream.
    const std::int64_t available = std::min(length, store->size - start);
    if (target + length > store->size) {
        if (const Status status = SetSize(target + length)) return status;
    }
    if (!IsSameStore(source)) return CopyFromOther(source, length, count);
    char* const buffer =
        static_cast<char*>(Alloc(static_cast<std::size_t>(std::min(length, kCopyBuffer))));
    if (!buffer) return kStatusInsufficientMemory;
    const platform::ScopeExit freeBuffer([buffer] { Free(buffer); });
    return CopyWithin(source, start, available, length, buffer, count);
}

}  // namespace AUX
