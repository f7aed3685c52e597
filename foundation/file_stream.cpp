#include "foundation/file_stream.h"

#include <algorithm>
#include <utility>

#include "platform/sync.h"

namespace AUX {
namespace {

// A failure that left no error code still has to be one; this value becomes its status unchanged.
constexpr DWORD ErrorOrUnknown(DWORD error) noexcept {
    return error ? error : static_cast<DWORD>(kStatusFailedToInitialize);
}

}  // namespace

FileStream::FileStream() noexcept : event(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

FileStream::~FileStream() = default;

FileStore* FileStream::GetStore() noexcept {
    if (!store) store = new (std::nothrow) FileStore;
    return File();
}

Status FileStream::ReleaseMapping() noexcept {
    return IsOpen() ? File()->CloseMapping() : kStatusNotInitialized;
}

std::uint32_t FileStream::GetAccess() const noexcept { return IsOpen() ? File()->access : 0; }

void FileStream::MoveTo(std::int64_t place) noexcept { position = place; }

StreamType FileStream::GetStreamType() const noexcept { return StreamType::File; }

Status FileStream::NeedAccess(std::uint32_t access) const noexcept {
    return (File()->access & access) == access ? kStatusOk : kStatusInvalidAccessMode;
}

Status FileStream::Open(const WCHAR* path, DWORD disposition, std::uint32_t access, DWORD share,
                        DWORD flags) noexcept {
    // Copied first: the text may be the path of the file that is open, which closing forgets.
    WString kept;
    const bool isKept = kept.Assign(path);
    (void)Close();  // What became of the file before says nothing about the new one.
    if (!GetStore()) return kStatusInsufficientMemory;
    if (!(access & kAccessMask)) return kStatusInvalidAccessMode;
    if (!isKept) return kStatusInsufficientMemory;
    return OpenStore(std::move(kept), {disposition, access, share, flags});
}

Status FileStream::OpenStore(WString path, const FileOpening& opening) noexcept {
    if (!event) event.Reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!event) return StatusFromFailedCall(GetLastError());
    File()->path = std::move(path);
    if (const Status status = File()->OpenFile(opening)) {
        File()->path.Free();
        return status;
    }
    const Status status = File()->CreateMapping();
    if (IsFailure(status)) (void)Close();
    return status;
}

void FileStream::SetOffset() noexcept {
    const std::uint64_t offset = static_cast<std::uint64_t>(position);
    overlapped = {};
    overlapped.Offset = static_cast<DWORD>(offset);
    overlapped.OffsetHigh = static_cast<DWORD>(offset >> 32);
    // Signalling it costs the system a call; where transfers are done at once nobody waits.
    if (File()->isOverlapped) overlapped.hEvent = event.Get();
}

// Waits for a transfer that is under way. \return the system's error, 0 for success.
DWORD FileStream::TransferResult(BOOL succeeded, DWORD& moved) noexcept {
    if (succeeded) return NO_ERROR;
    const DWORD error = GetLastError();
    if (error != ERROR_IO_PENDING) return ErrorOrUnknown(error);
    if (GetOverlappedResult(File()->handle.Get(), &overlapped, &moved, TRUE)) return NO_ERROR;
    return ErrorOrUnknown(GetLastError());
}

DWORD FileStream::ReadChunk(void* buffer, DWORD bytes, DWORD& moved) noexcept {
    moved = 0;
    SetOffset();
    const BOOL isRead = ReadFile(File()->handle.Get(), buffer, bytes, &moved, &overlapped);
    const DWORD error = TransferResult(isRead, moved);
    if (error != ERROR_HANDLE_EOF) return error;
    moved = 0;  // A positioned read says so where a plain one gives no bytes.
    return NO_ERROR;
}

DWORD FileStream::WriteChunk(const void* data, DWORD bytes, DWORD& moved) noexcept {
    moved = 0;
    SetOffset();
    const BOOL isWritten = WriteFile(File()->handle.Get(), data, bytes, &moved, &overlapped);
    return TransferResult(isWritten, moved);
}

Status FileStream::Read(void* buffer, std::int64_t length, std::int64_t& count) noexcept {
    constexpr DWORD kFirstNetworkError = 53;  // ERROR_BAD_NETPATH
    constexpr DWORD kLastNetworkError = 59;   // ERROR_UNEXP_NET_ERR
    if (const Status status = CheckTransfer(buffer, length, count)) return status;
    if (const Status status = NeedAccess(kAccessRead)) return status;
    bool wasReopened = false;
    while (count < length) {
        const DWORD wanted = static_cast<DWORD>(std::min(length - count, kMaxTransfer));
        DWORD moved = 0;
        const DWORD error = ReadChunk(static_cast<char*>(buffer) + count, wanted, moved);
        if (error >= kFirstNetworkError && error <= kLastNetworkError) {
            if (wasReopened) return kStatusReadFailed;
            const Status status = RecoverRead(wasReopened);
            if (IsFailure(status)) return status;
            continue;
        }
        if (error) return StatusFromSystemError(error);
        wasReopened = false;
        position += moved;
        count += moved;
        if (moved < wanted) return moved ? kStatusOk : kStatusEndOfData;
    }
    return kStatusOk;
}

Status FileStream::Write(const void* data, std::int64_t length, std::int64_t& count) noexcept {
    if (const Status status = CheckTransfer(data, length, count)) return status;
    if (const Status status = NeedAccess(kAccessWrite)) return status;
    Status status = kStatusOk;
    while (count < length && !IsFailure(status)) {
        const DWORD wanted = static_cast<DWORD>(std::min(length - count, kMaxTransfer));
        DWORD moved = 0;
        const DWORD error = WriteChunk(static_cast<const char*>(data) + count, wanted, moved);
        position += moved;
        count += moved;
        if (error) {
            status = StatusFromSystemError(error);
        } else if (moved < wanted) {
            status = kStatusFailure;
        }
    }
    // After a failure too: closing would cut off what did reach the file.
    store->size = std::max(store->size, position);
    store->allocated = std::max(store->allocated, position);
    return status;
}

Status FileStream::SetSize(std::int64_t newSize) noexcept {
    if (!IsOpen()) return kStatusNotInitialized;
    if (newSize < 0) return kStatusInvalidArgument;
    if (const Status status = NeedAccess(kAccessWrite)) return status;
    if (const Status status = File()->SetEnd(newSize)) return status;
    store->size = newSize;
    store->allocated = newSize;
    position = std::min(position, newSize);
    return kStatusOk;
}

Status FileStream::Compact() noexcept { return IsOpen() ? kStatusOk : kStatusNotInitialized; }

Status FileStream::ReleaseView() noexcept { return IsOpen() ? kStatusOk : kStatusNotInitialized; }

Status FileStream::Flush() noexcept {
    if (!IsOpen()) return kStatusNotInitialized;
    if (FlushFileBuffers(File()->handle.Get())) return kStatusOk;
    return StatusFromFailedCall(GetLastError());
}

std::unique_ptr<Stream> FileStream::Clone(Status* status) noexcept {
    Status ignored = kStatusOk;
    Status& result = status ? *status : ignored;
    result = kStatusNotInitialized;
    if (!IsOpen()) return nullptr;
    std::unique_ptr<FileStream> clone(new (std::nothrow) FileStream);
    result = kStatusInsufficientMemory;
    if (!clone) return nullptr;
    result = StatusFromFailedCall(GetLastError());
    if (!clone->event) return nullptr;
    clone->Attach(*this);
    result = kStatusOk;
    return clone;
}

}  // namespace AUX
