#include "foundation/dyn_mem_stream.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "foundation/memory.h"

namespace AUX {
namespace {

constexpr std::int64_t kPage = 4096;
constexpr std::int64_t kMaxSize = std::numeric_limits<std::int64_t>::max();

// Rounds up to a multiple; what would overflow becomes more than any memory holds.
std::int64_t RoundUp(std::int64_t size, std::int64_t multiple) noexcept {
    const std::int64_t rest = size % multiple;
    if (rest == 0) return size;
    const std::int64_t missing = multiple - rest;
    return size > kMaxSize - missing ? kMaxSize : size + missing;
}

std::int64_t GrownTo(std::int64_t allocated, std::int64_t growth, std::int64_t newSize) noexcept {
    if (growth >= 1) return RoundUp(newSize, growth);
    const std::int64_t step = allocated / -growth;
    std::int64_t grown = 2 * kPage;
    if (allocated > kPage) grown = allocated > kMaxSize - step ? kMaxSize : allocated + step;
    return grown < newSize ? RoundUp(newSize, kPage) : grown;
}

}  // namespace

DynMemStore::~DynMemStore() { Free(data); }

Status DynMemStore::Close() noexcept {
    Free(data);
    data = nullptr;
    size = 0;
    allocated = 0;
    access = 0;
    return kStatusOk;
}

Status DynMemStream::Open(std::int64_t initialSize, std::int64_t growth) noexcept {
    (void)Close();  // Memory closes without fail.
    if (initialSize < 0) return kStatusInvalidArgument;
    if (!store) store = new (std::nothrow) DynMemStore;
    if (!store) return kStatusInsufficientMemory;
    const std::int64_t kept = growth == 0 ? -2 : std::max<std::int64_t>(growth, -4);
    std::int64_t room = initialSize;
    if (room == 0) room = kept < 1 ? kPage : kept;
    if (kept >= 1) room = RoundUp(room, kept);
    Own()->data = static_cast<char*>(Alloc(static_cast<std::size_t>(room)));
    if (!Own()->data) return kStatusInsufficientMemory;
    Own()->growth = kept;
    Own()->access = kAccessRead | kAccessWrite;
    store->allocated = room;
    store->size = initialSize;
    ClearFrom(0);
    return kStatusOk;
}

void DynMemStream::ClearFrom(std::int64_t start) noexcept {
    const std::int64_t bytes = store->size - start;
    if (bytes > 0) std::memset(Own()->data + start, 0, static_cast<std::size_t>(bytes));
}

// Sets the size to a larger one; the new bytes are undefined.
Status DynMemStream::MakeRoom(std::int64_t newSize) noexcept {
    if (newSize > store->allocated) {
        const std::int64_t room = GrownTo(store->allocated, Own()->growth, newSize);
        void* const block = Resize(Own()->data, static_cast<std::size_t>(room));
        if (!block) return kStatusInsufficientMemory;
        Own()->data = static_cast<char*>(block);
        store->allocated = room;
    }
    store->size = newSize;
    return kStatusOk;
}

Status DynMemStream::SetSize(std::int64_t newSize) noexcept {
    if (!IsOpen()) return kStatusNotInitialized;
    if (newSize < 0) return kStatusInvalidArgument;
    const std::int64_t oldSize = store->size;
    if (const Status status = MakeRoom(newSize)) return status;
    ClearFrom(oldSize);
    position = std::min(position, newSize);
    return kStatusOk;
}

// Read and Write serve the many single values in a few instructions, with no call and so without
// saving a register; all else is the matter of ReadChecked and WriteAny.
Status DynMemStream::Read(void* buffer, std::int64_t length, std::int64_t& count) noexcept {
    if (store && Own()->data && buffer && length <= store->size - position &&
        MoveValue(buffer, Own()->data + position, length)) {
        position += length;
        count = length;
        return kStatusOk;
    }
    return ReadChecked(buffer, length, count);
}

Status DynMemStream::ReadAt(void* buffer, std::int64_t length, SeekMode mode, std::int64_t offset,
                            std::int64_t& count) noexcept {
    if (const Status status = CheckTransfer(buffer, length, count)) return status;
    return ReadBytesAt(buffer, length, mode, offset, count);
}

Status DynMemStream::Write(const void* data, std::int64_t length, std::int64_t& count) noexcept {
    if (store && Own()->data && data && position <= store->size &&
        length <= store->allocated - position && MoveValue(Own()->data + position, data, length)) {
        position += length;
        store->size = std::max(store->size, position);
        count = length;
        return kStatusOk;
    }
    return WriteAny(data, length, count);
}

Status DynMemStream::WriteAny(const void* data, std::int64_t length, std::int64_t& count) noexcept {
    if (const Status status = CheckTransfer(data, length, count)) return status;
    if (length == 0) return kStatusOk;
    if (length > BytesLeft()) {
        if (length > kMaxSize - position) return kStatusInsufficientMemory;
        const std::int64_t oldSize = store->size;
        // What is written may lie in this very block, which may move.
        const char* const block = Own()->data;
        const std::uintptr_t offset =
            reinterpret_cast<std::uintptr_t>(data) - reinterpret_cast<std::uintptr_t>(block);
        const bool isOwn = offset < static_cast<std::uintptr_t>(store->allocated);
        if (const Status status = MakeRoom(position + length)) return status;
        if (isOwn) data = Own()->data + offset;
        // A clone may have cut the content off before this stream's position.
        if (position > oldSize) {
            std::memset(Own()->data + oldSize, 0, static_cast<std::size_t>(position - oldSize));
        }
    }
    PutBytes(data, length);
    count = length;
    return kStatusOk;
}

Status DynMemStream::CopyFrom(Stream& source, SeekMode mode, std::int64_t offset,
                              std::int64_t length, std::int64_t& count) noexcept {
    count = 0;
    if (!IsOpen()) return kStatusNotInitialized;
    if (const Status status = NeedAccess(kAccessWrite)) return status;
    if (length < 1) return kStatusOk;
    if (length > kMaxSize - position) return kStatusInsufficientMemory;
    CopySource from{source};
    if (const Status status = SeekSource(from, mode, offset)) return status;
    const std::int64_t oldSize = store->size;
    if (position + length > oldSize) {
        if (const Status status = MakeRoom(position + length)) return status;
    }
    if (position > oldSize) {
        std::memset(Own()->data + oldSize, 0, static_cast<std::size_t>(position - oldSize));
    }
    const Status status = CopyIn(from, length, count);
    ClearFrom(std::max(position, oldSize));
    return status;
}

Status DynMemStream::Compact() noexcept {
    if (!IsOpen()) return kStatusNotInitialized;
    if (store->allocated <= store->size) return kStatusOk;
    constexpr std::int64_t kLeast = 4;
    const std::int64_t room = store->size == 0 ? kLeast : store->size;
    void* const block = Realloc(Own()->data, static_cast<std::size_t>(room));
    if (!block) return kStatusInsufficientMemory;
    Own()->data = static_cast<char*>(block);
    store->allocated = room;
    return kStatusOk;
}

Status DynMemStream::SetAccess(std::uint32_t access) noexcept {
    if (!IsOpen()) return kStatusNotInitialized;
    Own()->access = access & kAccessMask;
    return kStatusOk;
}

StreamType DynMemStream::GetStreamType() const noexcept { return StreamType::DynamicMemory; }

std::unique_ptr<Stream> DynMemStream::Clone(Status* status) noexcept {
    return MakeClone<DynMemStream>(*this, status);
}

}  // namespace AUX
