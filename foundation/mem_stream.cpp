#include "foundation/mem_stream.h"

#include <algorithm>

namespace AUX {

Status MemStore::Close() noexcept {
    data = nullptr;
    size = 0;
    allocated = 0;
    access = 0;
    return kStatusOk;
}

Status MemStream::Open(void* data, std::int64_t size, std::uint32_t access) noexcept {
    (void)Close();  // Memory closes without fail.
    if (!(access & kAccessMask)) return kStatusInvalidAccessMode;
    if (!data || size < 0) return kStatusInvalidArgument;
    if (!store) store = new (std::nothrow) MemStore;
    if (!store) return kStatusInsufficientMemory;
    Block()->data = static_cast<char*>(data);
    Block()->access = access & kAccessMask;
    store->size = size;
    store->allocated = size;
    return kStatusOk;
}

Status MemStream::Read(void* buffer, std::int64_t length, std::int64_t& count) noexcept {
    if (const Status status = CheckTransfer(buffer, length, count)) return status;
    if (const Status status = NeedAccess(kAccessRead)) return status;
    return ReadBytes(buffer, length, count);
}

Status MemStream::ReadAt(void* buffer, std::int64_t length, SeekMode mode, std::int64_t offset,
                         std::int64_t& count) noexcept {
    if (const Status status = CheckTransfer(buffer, length, count)) return status;
    if (const Status status = NeedAccess(kAccessRead)) return status;
    return ReadBytesAt(buffer, length, mode, offset, count);
}

Status MemStream::Write(const void* data, std::int64_t length, std::int64_t& count) noexcept {
    if (const Status status = CheckTransfer(data, length, count)) return status;
    if (const Status status = NeedAccess(kAccessWrite)) return status;
    if (length == 0) return kStatusOk;
    const std::int64_t fits = std::min(length, BytesLeft());
    if (fits == 0) return kStatusEndOfData;
    PutBytes(data, fits);
    count = fits;
    return kStatusOk;
}

Status MemStream::CopyFrom(Stream& source, SeekMode mode, std::int64_t offset, std::int64_t length,
                           std::int64_t& count) noexcept {
    count = 0;
    if (!IsOpen()) return kStatusNotInitialized;
    if (const Status status = NeedAccess(kAccessWrite)) return status;
    if (length < 1) return kStatusOk;
    CopySource from{source};
    if (const Status status = SeekSource(from, mode, offset)) return status;
    return CopyIn(from, std::min(length, BytesLeft()), count);
}

Status MemStream::SetSize(std::int64_t) noexcept {
    return IsOpen() ? kStatusUnsupportedOperation : kStatusNotInitialized;
}

Status MemStream::Compact() noexcept { return IsOpen() ? kStatusOk : kStatusNotInitialized; }

StreamType MemStream::GetStreamType() const noexcept { return StreamType::Memory; }

std::unique_ptr<Stream> MemStream::Clone(Status* status) noexcept {
    return MakeClone<MemStream>(*this, status);
}

}  // namespace AUX
