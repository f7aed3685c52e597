#pragma once

#include <cstdint>
#include <memory>

#include "foundation/allocated.h"
#include "foundation/status.h"

namespace AUX {

/// Where an offset counts from.
enum class SeekMode : std::int32_t { Start = 0, Position = 1, End = 2 };

enum class StreamType : std::int32_t {
    MappedFile = 1,
    Memory = 2,
    DynamicMemory = 3,
    Foreign = 4,  ///< A stream that a client of another module implements.
    File = 5,
};

/// Access flags, or'ed together.
inline constexpr std::uint32_t kAccessRead = 1;
inline constexpr std::uint32_t kAccessWrite = 2;
inline constexpr std::uint32_t kAccessMask = kAccessRead | kAccessWrite;

/// The largest single transfer, in bytes: the system's calls count in 32 bits.
inline constexpr std::int64_t kMaxTransfer = 0x40000000;

/// The bytes, or the file handle, behind one or more streams. The streams count themselves in
/// `refCount`, without atomic operations; the last one closes and destroys the store.
class StreamStore : public Allocated {
public:
    StreamStore() = default;
    StreamStore(const StreamStore&) = delete;
    StreamStore& operator=(const StreamStore&) = delete;
    virtual ~StreamStore() = default;

    /// Whether there is something to read or write.
    [[nodiscard]] virtual bool IsValid() const noexcept = 0;

    /// Gives up the content and becomes invalid; sizes and access become 0.
    virtual Status Close() noexcept = 0;

    std::int64_t refCount = 1;
    std::int64_t allocated = 0;  ///< Bytes reserved; of a file its size.
    std::int64_t size = 0;       ///< Bytes of content.
};

/// What tells one file from another, as the file system gives it.
struct FileIdentity {
    std::uint64_t volumeSerialNumber = 0;
    std::uint8_t fileId[16] = {};
    std::uint64_t reserved = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};
static_assert(sizeof(FileIdentity) == 32);

/// A cursor with a 64-bit position over a container of bytes. The bytes lie in a store that clones
/// share; each stream has its own position. Owns a reference on its store. Not thread-safe; clones
/// are made and detached from one thread at a time.
///
/// A stream without a store, or with an invalid one, is closed. On a closed stream every operation
/// gives kStatusNotInitialized, except that getters give 0 or null, and Close and Detach 0. Sizes,
/// lengths, positions and counts are bytes. An out count holds, after a failure too, what was
/// really moved, and the position includes it. A negative length of a transfer, or a null buffer
/// with a length, gives kStatusInvalidArgument.
class Stream : public Allocated {
public:
    /// Detaches, and drops the result.
    virtual ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    [[nodiscard]] virtual std::int64_t GetPosition() const noexcept;
    [[nodiscard]] virtual std::int64_t GetAllocated() const noexcept;
    [[nodiscard]] virtual std::int64_t GetSize() const noexcept;

    /// kAccessRead and kAccessWrite.
    [[nodiscard]] virtual std::uint32_t GetAccess() const noexcept = 0;

    /// \return kStatusInvalidSeekMode; kStatusInvalidSeekPosition for a target below 0 or above the
    ///         size, which leaves the position alone.
    [[nodiscard]] virtual Status Seek(SeekMode mode, std::int64_t offset) noexcept;

    /// Reads up to `length` bytes; fewer are a success, none (of a length that is not 0) give
    /// kStatusEndOfData.
    [[nodiscard]] virtual Status Read(void* buffer, std::int64_t length,
                                      std::int64_t& count) noexcept = 0;

    [[nodiscard]] virtual Status Write(const void* data, std::int64_t length,
                                       std::int64_t& count) noexcept = 0;

    /// Reads at another place and leaves the position alone. Fails as Seek and Read do.
    [[nodiscard]] virtual Status ReadAt(void* buffer, std::int64_t length, SeekMode mode,
                                        std::int64_t offset, std::int64_t& count) noexcept;

    /// Copies up to `length` bytes to this stream's position, from the place in `source` that
    /// `mode` and `offset` name. The source may be this stream or a clone of it, the two ranges may
    /// overlap: what the source held before is copied. A length below 1 gives 0. The result is that
    /// of the last read: kStatusEndOfData if the source ended early.
    [[nodiscard]] virtual Status CopyFrom(Stream& source, SeekMode mode, std::int64_t offset,
                                          std::int64_t length, std::int64_t& count) noexcept = 0;

    /// Cuts or lengthens the content; new bytes are 0. A position beyond the new size is cut back.
    /// \return kStatusInvalidArgument for a negative size; after a failure nothing has changed.
    [[nodiscard]] virtual Status SetSize(std::int64_t newSize) noexcept = 0;

    /// Gives back what is reserved beyond the content.
    [[nodiscard]] virtual Status Compact() noexcept = 0;

    /// Gives back the view of a mapped file; other streams have none.
    [[nodiscard]] virtual Status ReleaseView() noexcept = 0;

    /// Hands written bytes to the device.
    [[nodiscard]] virtual Status Flush() noexcept;

    /// The bytes themselves, until the next call that changes their number; null if they do not lie
    /// in memory.
    [[nodiscard]] virtual void* GetData() noexcept;

    [[nodiscard]] virtual bool IsOpen() const noexcept;

    /// Replaces the access flags.
    [[nodiscard]] virtual Status SetAccess(std::uint32_t access) noexcept;

    /// Closes the store, for all streams on it; it stays attached, so that Open can use it again.
    [[nodiscard]] virtual Status Close() noexcept;

    /// Gives up the store; the last stream on it closes it, and that is then the result.
    [[nodiscard]] virtual Status Detach() noexcept;

    [[nodiscard]] virtual StreamType GetStreamType() const noexcept = 0;
    [[nodiscard]] virtual StreamType GetKind() const noexcept;

    /// Makes another stream on the same store, at position 0.
    /// \param status  May be null.
    /// \return null if the stream is closed or memory runs out.
    [[nodiscard]] virtual std::unique_ptr<Stream> Clone(Status* status = nullptr) noexcept = 0;

    [[nodiscard]] virtual bool IsSameStore(const Stream& other) const noexcept;

    /// \return false if the stream is not an open file; `identity` then stays as it was.
    [[nodiscard]] virtual bool GetFileIdentity(FileIdentity& identity) const noexcept;

    /// Compares bytes of two streams, which may be one stream. Both positions go to the offsets and
    /// on behind what was read.
    /// \return 1 if they are equal (a length below 1 too), 0 or 2 if this stream's first byte that
    ///         differs is smaller or larger; as Seek for an offset outside; kStatusInternalError if
    ///         one gives fewer bytes.
    [[nodiscard]] virtual Status CompareRange(std::int64_t length, std::int64_t ownOffset,
                                              Stream& other, std::int64_t otherOffset) noexcept;

    /// Sets the position to 0, of a closed stream too.
    virtual Status Rewind() noexcept;

protected:
    Stream() noexcept = default;

    /// Shares the store of `source`, at position 0.
    void Attach(const Stream& source) noexcept;

    /// Serves Clone for a class that has nothing of its own beside the store.
    template <class T>
    static std::unique_ptr<Stream> MakeClone(const T& source, Status* status) noexcept {
        Status ignored = kStatusOk;
        Status& result = status ? *status : ignored;
        result = kStatusNotInitialized;
        if (!source.IsOpen()) return nullptr;
        std::unique_ptr<T> clone(new (std::nothrow) T);
        result = clone ? kStatusOk : kStatusInsufficientMemory;
        if (clone) static_cast<Stream&>(*clone).Attach(source);
        return clone;
    }

    /// Works out a place by mode and offset; fails as Seek does.
    [[nodiscard]] Status Locate(SeekMode mode, std::int64_t offset,
                                std::int64_t& target) const noexcept;

    /// What a transfer has to check first, by the rules above; sets the count to 0.
    [[nodiscard]] Status CheckTransfer(const void* buffer, std::int64_t length,
                                       std::int64_t& count) const noexcept;

    /// Bytes from the position to the end; a clone may have cut the content off before it.
    [[nodiscard]] std::int64_t BytesLeft() const noexcept;

    StreamStore* store = nullptr;  ///< Counted; see Attach and Detach.
    std::int64_t position = 0;

private:
    Status DropStore() noexcept;
};

/// Compares two streams whole. \return 0 or 2 if `a` is shorter or longer, else as CompareRange.
[[nodiscard]] Status CompareStreams(Stream& a, Stream& b) noexcept;

}  // namespace AUX
