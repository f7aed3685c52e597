#include "foundation/block_stream.h"

#include <algorithm>
#include <cstring>

namespace AUX {

std::uint32_t BlockStream::GetAccess() const noexcept { return store ? Block()->access : 0; }

Status BlockStream::ReleaseView() noexcept { return IsOpen() ? kStatusOk : kStatusNotInitialized; }

void* BlockStream::GetData() noexcept { return store ? Block()->data : nullptr; }

Status BlockStream::NeedAccess(std::uint32_t access) const noexcept {
    return (Block()->access & access) == access ? kStatusOk : kStatusInvalidAccessMode;
}

Status BlockStream::ReadBytes(void* buffer, std::int64_t length, std::int64_t& count) noexcept {
    if (length == 0) return kStatusOk;
    count = std::min(length, BytesLeft());
    if (count == 0) return kStatusEndOfData;
    std::memmove(buffer, Block()->data + position, static_cast<std::size_t>(count));
    position += count;
    return kStatusOk;
}

Status BlockStream::ReadChecked(void* buffer, std::int64_t length, std::int64_t& count) noexcept {
    if (const Status status = CheckTransfer(buffer, length, count)) return status;
    return ReadBytes(buffer, length, count);
}

Status BlockStream::ReadBytesAt(void* buffer, std::int64_t length, SeekMode mode,
                                std::int64_t offset, std::int64_t& count) noexcept {
    std::int64_t target = 0;
    if (const Status status = Locate(mode, offset, target)) return status;
    count = std::min(length, store->size - target);
    if (count > 0) std::memmove(buffer, Block()->data + target, static_cast<std::size_t>(count));
    return kStatusOk;
}

Status BlockStream::SeekSource(CopySource& source, SeekMode mode, std::int64_t offset) noexcept {
    const std::int64_t target = position;
    const Status status = source.stream.Seek(mode, offset);
    source.start = source.stream.GetPosition();
    source.available = source.stream.GetSize() - source.start;
    position = target;  // The source may be this very stream.
    return status;
}

Status BlockStream::CopyIn(const CopySource& source, std::int64_t length,
                           std::int64_t& count) noexcept {
    Status status = kStatusOk;
    if (IsSameStore(source.stream)) {
        // One move, since the two ranges may overlap.
        count = std::min(length, source.available);
        const std::int64_t target = position;
        (void)source.stream.Seek(SeekMode::Start, source.start + count);
        position = target;
        if (count > 0) PutBytes(Block()->data + source.start, count);
        return count < length ? kStatusEndOfData : kStatusOk;
    }
    while (count < length && !IsFailure(status)) {
        std::int64_t chunk = 0;
        status = source.stream.Read(Block()->data + position,
                                    std::min(length - count, kMaxTransfer), chunk);
        position += chunk;
        count += chunk;
        if (chunk == 0 && !IsFailure(status))
            status = kStatusInternalError;  // Neither more nor end.
    }
    return status;
}

}  // namespace AUX
