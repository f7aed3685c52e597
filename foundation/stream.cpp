#include "foundation/stream.h"

#include <algorithm>
#include <cstring>

namespace AUX {
namespace {

// A store can hold a file although it counts as closed, one whose mapping is gone; so each is asked
// to close, and one that has nothing to do is a success.
Status CloseResult(StreamStore& store) noexcept {
    const Status status = store.Close();
    return IsFailure(status) ? status : kStatusOk;
}

}  // namespace

Stream::~Stream() { (void)DropStore(); }

std::int64_t Stream::GetPosition() const noexcept { return position; }

std::int64_t Stream::GetAllocated() const noexcept { return IsOpen() ? store->allocated : 0; }

std::int64_t Stream::GetSize() const noexcept { return IsOpen() ? store->size : 0; }

Status Stream::Seek(SeekMode mode, std::int64_t offset) noexcept {
    return Locate(mode, offset, position);
}

Status Stream::ReadAt(void* buffer, std::int64_t length, SeekMode mode, std::int64_t offset,
                      std::int64_t& count) noexcept {
    if (const Status status = CheckTransfer(buffer, length, count)) return status;
    const std::int64_t before = position;
    Status status = Seek(mode, offset);
    if (!IsFailure(status)) status = Read(buffer, length, count);
    position = before;
    return status;
}

Status Stream::Flush() noexcept { return IsOpen() ? kStatusOk : kStatusNotInitialized; }

void* Stream::GetData() noexcept { return nullptr; }

bool Stream::IsOpen() const noexcept { return store && store->IsValid(); }

Status Stream::SetAccess(std::uint32_t) noexcept {
    return IsOpen() ? kStatusUnsupportedOperation : kStatusNotInitialized;
}

Status Stream::Close() noexcept {
    (void)Rewind();  // Of a closed stream it only clears the position.
    return store ? CloseResult(*store) : kStatusOk;
}

Status Stream::Detach() noexcept { return DropStore(); }

Status Stream::DropStore() noexcept {
    position = 0;
    StreamStore* const dropped = store;
    store = nullptr;
    if (!dropped || --dropped->refCount >= 1) return kStatusOk;
    const Status status = CloseResult(*dropped);
    delete dropped;
    return status;
}

StreamType Stream::GetKind() const noexcept { return GetStreamType(); }

bool Stream::IsSameStore(const Stream& other) const noexcept {
    return store && store == other.store;
}

bool Stream::GetFileIdentity(FileIdentity&) const noexcept { return false; }

Status Stream::CompareRange(std::int64_t length, std::int64_t ownOffset, Stream& other,
                            std::int64_t otherOffset) noexcept {
    constexpr Status kSmaller = 0;
    constexpr Status kEqual = 1;
    constexpr Status kLarger = 2;
    constexpr std::int64_t kChunk = 4096;
    if (const Status status = Seek(SeekMode::Start, ownOffset)) return status;
    if (const Status status = other.Seek(SeekMode::Start, otherOffset)) return status;
    char buffers[2][kChunk];
    std::int64_t done = 0;
    while (done < length) {
        const std::int64_t wanted = std::min(kChunk, length - done);
        std::int64_t ownCount = 0;
        std::int64_t otherCount = 0;
        // One status tells that there were fewer bytes, whatever the reason. The two may be one
        // stream, with one position: each sets it before it reads.
        (void)Seek(SeekMode::Start, ownOffset + done);
        (void)Read(buffers[0], wanted, ownCount);
        (void)other.Seek(SeekMode::Start, otherOffset + done);
        (void)other.Read(buffers[1], wanted, otherCount);
        if (ownCount != wanted || otherCount != wanted) return kStatusInternalError;
        const int order = std::memcmp(buffers[0], buffers[1], static_cast<std::size_t>(wanted));
        if (order != 0) return order < 0 ? kSmaller : kLarger;
        done += wanted;
    }
    return kEqual;
}

Status Stream::Rewind() noexcept {
    position = 0;
    return IsOpen() ? kStatusOk : kStatusNotInitialized;
}

void Stream::Attach(const Stream& source) noexcept {
    (void)DropStore();
    store = source.store;
    if (store) ++store->refCount;
}

Status Stream::Locate(SeekMode mode, std::int64_t offset, std::int64_t& target) const noexcept {
    if (!IsOpen()) return kStatusNotInitialized;
    std::int64_t base = 0;
    switch (mode) {
        case SeekMode::Start:
            break;
        case SeekMode::Position:
            base = position;
            break;
        case SeekMode::End:
            base = store->size;
            break;
        default:
            return kStatusInvalidSeekMode;
    }
    // Compared so that no sum can overflow: base is not negative.
    if (offset < -base || offset > store->size - base) return kStatusInvalidSeekPosition;
    target = base + offset;
    return kStatusOk;
}

Status Stream::CheckTransfer(const void* buffer, std::int64_t length,
                             std::int64_t& count) const noexcept {
    count = 0;
    if (!IsOpen()) return kStatusNotInitialized;
    if (length < 0 || (length > 0 && !buffer)) return kStatusInvalidArgument;
    return kStatusOk;
}

std::int64_t Stream::BytesLeft() const noexcept {
    return std::max<std::int64_t>(store->size - position, 0);
}

Status CompareStreams(Stream& a, Stream& b) noexcept {
    const std::int64_t size = a.GetSize();
    const std::int64_t otherSize = b.GetSize();
    if (size != otherSize) return size < otherSize ? 0 : 2;
    return a.CompareRange(size, 0, b, 0);
}

}  // namespace AUX
