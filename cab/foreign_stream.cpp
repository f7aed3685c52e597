#include "cab/foreign_stream.h"

#include <algorithm>

#include "foundation/memory.h"
#include "platform/scope_exit.h"

namespace AUX::CAB {
namespace {

/// Bytes of one step of a copy.
constexpr std::int64_t kCopyStep = 64 * 1024;

/// A code of COM as a status: a failure of the stream that names none is one of reading or writing.
Status StatusOf(HRESULT code, Status other) noexcept { return FAILED(code) ? code : other; }

/// The client's stream, with the size that this side knows of.
class ForeignStore final : public StreamStore {
public:
    ForeignStore(IStream* source, std::int64_t bytes, std::uint32_t flags) noexcept
        : stream(source), access(flags) {
        size = bytes;
        allocated = bytes;
    }

    [[nodiscard]] bool IsValid() const noexcept override { return static_cast<bool>(stream); }
    Status Close() noexcept override {
        stream.Reset();
        size = 0;
        allocated = 0;
        access = 0;
        return kStatusOk;
    }

    void Grow(std::int64_t bytes) noexcept {
        size = std::max(size, bytes);
        allocated = size;
    }

    platform::ComPtr<IStream> stream;
    std::uint32_t access;
};

class ForeignStream final : public Stream {
public:
    ForeignStream() noexcept = default;
    explicit ForeignStream(ForeignStore* owned) noexcept { store = owned; }

    [[nodiscard]] std::uint32_t GetAccess() const noexcept override {
        return store ? Own().access : 0;
    }

    [[nodiscard]] Status Read(void* buffer, std::int64_t length,
                              std::int64_t& count) noexcept override {
        if (const Status status = Prepare(buffer, length, kAccessRead, count)) return status;
        while (count < length) {
            ULONG done = 0;
            const HRESULT result =
                Own().stream->Read(static_cast<char*>(buffer) + count, Step(length - count), &done);
            Advance(done, length, count);
            if (FAILED(result)) return result;
            if (done == 0) break;
        }
        return count == 0 && length > 0 ? kStatusEndOfData : kStatusOk;
    }

    [[nodiscard]] Status Write(const void* data, std::int64_t length,
                               std::int64_t& count) noexcept override {
        if (const Status status = Prepare(data, length, kAccessWrite, count)) return status;
        while (count < length) {
            ULONG done = 0;
            const HRESULT result = Own().stream->Write(static_cast<const char*>(data) + count,
                                                       Step(length - count), &done);
            Advance(done, length, count);
            Own().Grow(position);
            if (FAILED(result) || done == 0) return StatusOf(result, kStatusWriteFailed);
        }
        return kStatusOk;
    }

    [[nodiscard]] Status CopyFrom(Stream& source, SeekMode mode, std::int64_t offset,
                                  std::int64_t length, std::int64_t& count) noexcept override {
        count = 0;
        if (!IsOpen()) return kStatusNotInitialized;
        if (!(Own().access & kAccessWrite)) return kStatusInvalidAccessMode;
        if (length < 1) return kStatusOk;
        const std::int64_t target = position;
        if (const Status status = source.Seek(mode, offset)) return status;
        const std::int64_t start = source.GetPosition();
        position = target;  // The source may be this very stream.
        // What two ranges of one stream share must be read before it is overwritten, and what is
        // written behind its end is not read again.
        const bool isSame = IsSameStore(source);
        const std::int64_t all = isSame ? std::min(length, source.GetSize() - start) : length;
        const std::int64_t step = isSame ? all : std::min(length, kCopyStep);
        if (step < 1) return kStatusEndOfData;
        void* const buffer = Alloc(static_cast<std::size_t>(step));
        if (!buffer) return kStatusInsufficientMemory;
        const platform::ScopeExit freeBuffer([buffer] { Free(buffer); });
        while (count < all) {
            std::int64_t taken = 0;
            const Status hasRead = source.ReadAt(buffer, std::min(step, all - count),
                                                 SeekMode::Start, start + count, taken);
            std::int64_t put = 0;
            const Status hasWritten = Write(buffer, taken, put);
            count += put;
            if (IsFailure(hasWritten)) return hasWritten;
            if (IsFailure(hasRead)) return hasRead;
            if (taken == 0) return kStatusEndOfData;
        }
        return count < length ? kStatusEndOfData : kStatusOk;
    }

    [[nodiscard]] Status SetSize(std::int64_t newSize) noexcept override {
        if (!IsOpen()) return kStatusNotInitialized;
        if (newSize < 0) return kStatusInvalidArgument;
        if (!(Own().access & kAccessWrite)) return kStatusInvalidAccessMode;
        ULARGE_INTEGER bytes;
        bytes.QuadPart = static_cast<ULONGLONG>(newSize);
        const HRESULT result = Own().stream->SetSize(bytes);
        if (FAILED(result)) return result;
        store->size = store->allocated = newSize;
        position = std::min(position, newSize);
        return kStatusOk;
    }

    [[nodiscard]] Status Compact() noexcept override { return Stream::Flush(); }
    [[nodiscard]] Status ReleaseView() noexcept override { return kStatusOk; }
    [[nodiscard]] Status Flush() noexcept override {
        if (!IsOpen()) return kStatusNotInitialized;
        return StatusOf(Own().stream->Commit(0), kStatusOk);
    }
    [[nodiscard]] StreamType GetStreamType() const noexcept override { return StreamType::Foreign; }
    [[nodiscard]] std::unique_ptr<Stream> Clone(Status* status) noexcept override {
        return MakeClone(*this, status);
    }

private:
    [[nodiscard]] ForeignStore& Own() const noexcept { return *static_cast<ForeignStore*>(store); }

    static ULONG Step(std::int64_t left) noexcept {
        return static_cast<ULONG>(std::min(left, kMaxTransfer));
    }

    // Checks a transfer and brings the client's one position to this stream's own.
    [[nodiscard]] Status Prepare(const void* buffer, std::int64_t length, std::uint32_t needed,
                                 std::int64_t& count) noexcept {
        if (const Status status = CheckTransfer(buffer, length, count)) return status;
        if (!(Own().access & needed)) return kStatusInvalidAccessMode;
        LARGE_INTEGER place;
        place.QuadPart = position;
        return StatusOf(Own().stream->Seek(place, STREAM_SEEK_SET, nullptr), kStatusOk);
    }

    // A client's stream may tell more than it was asked for; that is not believed.
    void Advance(ULONG done, std::int64_t length, std::int64_t& count) noexcept {
        const std::int64_t moved = std::min<std::int64_t>(done, length - count);
        count += moved;
        position += moved;
    }
};

// Not every stream has facts, and not every one can be moved.
bool FindSize(IStream& source, std::int64_t& size) noexcept {
    STATSTG facts{};
    constexpr DWORD kWithoutName = 1;
    ULARGE_INTEGER bytes{};
    if (SUCCEEDED(source.Stat(&facts, kWithoutName))) {
        bytes = facts.cbSize;
    } else if (FAILED(source.Seek({}, STREAM_SEEK_END, &bytes))) {
        return false;
    }
    size = static_cast<std::int64_t>(bytes.QuadPart);
    return size >= 0;
}

}  // namespace

std::unique_ptr<Stream> MakeForeignStream(IStream* source, std::uint32_t access) noexcept {
    std::int64_t size = 0;
    if (!source || !FindSize(*source, size)) return nullptr;
    std::unique_ptr<ForeignStore> store(new (std::nothrow) ForeignStore(source, size, access));
    if (!store) return nullptr;
    std::unique_ptr<Stream> stream(new (std::nothrow) ForeignStream(store.get()));
    if (stream) (void)store.release();  // The stream counts it.
    return stream;
}

}  // namespace AUX::CAB
