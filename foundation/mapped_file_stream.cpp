#include "foundation/mapped_file_stream.h"

#include <algorithm>

#include "platform/guarded_copy.h"
#include "platform/sync.h"

namespace AUX {

using platform::CopyOutcome;
using platform::GuardedCopy;

MappedFileStream::MappedFileStream() noexcept = default;

MappedFileStream::~MappedFileStream() { RemoveViewFromStore(); }

void MappedFileStream::AddViewToStore() noexcept {
    if (store) Mapped()->AddView(*this);
}

void MappedFileStream::RemoveViewFromStore() noexcept {
    view.Reset();
    if (store) Mapped()->RemoveView(*this);
}

void MappedFileStream::TakeStore(MappedFileStore* made) noexcept {
    store = made;
    AddViewToStore();
}

MappedFileStore* MappedFileStream::GetStore() noexcept {
    if (!store) TakeStore(new (std::nothrow) MappedFileStore);
    return Mapped();
}

Status MappedFileStream::Detach() noexcept {
    (void)Rewind();
    RemoveViewFromStore();
    return FileStream::Detach();
}

std::unique_ptr<Stream> MappedFileStream::Clone(Status* status) noexcept {
    return CloneAs<MappedFileStream>(status);
}

StreamType MappedFileStream::GetStreamType() const noexcept { return StreamType::MappedFile; }

Status MappedFileStream::ReleaseView() noexcept {
    view.Reset();
    viewLeft = 0;
    return IsOpen() ? kStatusOk : kStatusNotInitialized;
}

Status MappedFileStream::Rewind() noexcept {
    view.Reset();
    viewBase = 0;
    viewLength = 0;
    viewLeft = 0;
    return FileStream::Rewind();
}

Status MappedFileStream::ReleaseMapping() noexcept {
    const Status status = ReleaseView();
    return status ? status : FileStream::ReleaseMapping();
}

Status MappedFileStream::Flush() noexcept {
    // What was written through the view is not yet the file's, as the system sees it.
    if (IsOpen() && view && !FlushViewOfFile(view.Get(), 0)) {
        return StatusFromFailedCall(GetLastError());
    }
    return FileStream::Flush();
}

// Works out the view for a place, and ends the present one if it is another. A clone may have cut
// the file off before the place.
void MappedFileStream::MoveTo(std::int64_t place) noexcept {
    const std::int64_t granule = Mapped()->granularity;
    const std::int64_t allocated = Mapped()->allocated;
    std::int64_t base = place - place % granule;
    if (allocated - base <= granule && base >= 1) base -= granule;  // Two granules at the end too.
    const std::int64_t length = std::clamp<std::int64_t>(allocated - base, 0, Mapped()->viewSize);
    if (base != viewBase || length != viewLength) view.Reset();
    position = place;
    viewBase = base;
    viewLength = static_cast<std::uint32_t>(length);
    viewLeft = static_cast<std::uint32_t>(std::max<std::int64_t>(length - (place - base), 0));
}

// Only a view that is used up is given up.
void MappedFileStream::Advance(std::int64_t moved) noexcept {
    position += moved;
    viewLeft -= static_cast<std::uint32_t>(moved);
    if (viewLeft == 0) MoveTo(position);
}

Status MappedFileStream::Seek(SeekMode mode, std::int64_t offset) noexcept {
    std::int64_t target = 0;
    if (const Status status = Locate(mode, offset, target)) return status;
    MoveTo(target);
    return kStatusOk;
}

Status MappedFileStream::MapView() noexcept {
    if (view) return viewLeft ? kStatusOk : kStatusInternalError;
    MoveTo(position);
    if (viewLeft == 0) return kStatusInternalError;
    const auto offset = static_cast<std::uint64_t>(viewBase);
    view.Reset(MapViewOfFile(Mapped()->mapping.Get(), Mapped()->mapAccess,
                             static_cast<DWORD>(offset >> 32), static_cast<DWORD>(offset),
                             viewLength));
    return view ? kStatusOk : StatusFromFailedCall(GetLastError());
}

// The file is gone under the view.
Status MappedFileStream::RecoverView(bool& wasReopened) noexcept {
    constexpr DWORD kPauseMs = 1;
    if (wasReopened) return kStatusReadFailed;
    (void)ReleaseView();
    const Status status = RecoverRead(wasReopened);
    if (!IsFailure(status) && !wasReopened) Sleep(kPauseMs);  // Too early: it will be tried again.
    return status;
}

Status MappedFileStream::Read(void* buffer, std::int64_t length, std::int64_t& count) noexcept {
    if (const Status status = CheckTransfer(buffer, length, count)) return status;
    if (const Status status = NeedAccess(kAccessRead)) return status;
    if (length == 0) return kStatusOk;
    const std::int64_t wanted = std::min(length, BytesLeft());
    if (wanted == 0) return kStatusEndOfData;
    bool wasReopened = false;
    while (count < wanted) {
        if (const Status status = MapView()) return status;
        const std::int64_t part = std::min<std::int64_t>(wanted - count, viewLeft);
        const CopyOutcome outcome =
            GuardedCopy(static_cast<char*>(buffer) + count, At(), static_cast<std::size_t>(part));
        if (outcome == CopyOutcome::TargetLost) return StatusFromSystemError(ERROR_NOACCESS);
        if (outcome == CopyOutcome::SourceLost) {
            const Status status = RecoverView(wasReopened);
            if (IsFailure(status)) return status;
            continue;
        }
        wasReopened = false;
        count += part;
        Advance(part);
    }
    return kStatusOk;
}

Status MappedFileStream::ReadAt(void* buffer, std::int64_t length, SeekMode mode,
                                std::int64_t offset, std::int64_t& count) noexcept {
    if (const Status status = CheckTransfer(buffer, length, count)) return status;
    const std::int64_t before = position;
    Status status = Seek(mode, offset);
    if (!IsFailure(status)) status = Read(buffer, length, count);
    position = before;
    if (IsOpen()) MoveTo(before);
    return status;
}

void MappedFileStream::RaiseSize(std::int64_t size) noexcept {
    store->size = std::max(store->size, size);
    Mapped()->dirtyEnd = std::max(Mapped()->dirtyEnd, size);
}

// Writes at the position, as far as the mapping reaches.
Status MappedFileStream::PutBytes(const char* data, std::int64_t length,
                                  std::int64_t& count) noexcept {
    while (count < length) {
        if (const Status status = MapView()) return status;
        const std::int64_t part = std::min<std::int64_t>(length - count, viewLeft);
        const CopyOutcome outcome = GuardedCopy(At(), data + count, static_cast<std::size_t>(part));
        if (outcome == CopyOutcome::SourceLost) return StatusFromSystemError(ERROR_NOACCESS);
        if (outcome == CopyOutcome::TargetLost) return kStatusWriteFailed;
        count += part;
        Advance(part);
        RaiseSize(position);
    }
    return kStatusOk;
}

Status MappedFileStream::Write(const void* data, std::int64_t length,
                               std::int64_t& count) noexcept {
    if (const Status status = CheckTransfer(data, length, count)) return status;
    if (const Status status = NeedAccess(kAccessWrite)) return status;
    if (length == 0) return kStatusOk;
    if (length > INT64_MAX - position) return kStatusInvalidArgument;
    if (position + length > store->allocated) {
        if (const Status status = MakeRoom(position + length)) return status;
    }
    // A clone may have cut the content off before the position.
    if (const Status status = PutZeros(store->size, position)) return status;
    return PutBytes(static_cast<const char*>(data), length, count);
}

}  // namespace AUX
