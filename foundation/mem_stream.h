#pragma once

#include "foundation/block_stream.h"

namespace AUX {

/// Bytes that someone else owns and keeps until the stream is closed.
class MemStore final : public BlockStore {
public:
    Status Close() noexcept override;
};

/// A view of memory with a fixed size. Reading needs kAccessRead, writing kAccessWrite.
class MemStream final : public BlockStream {
public:
    /// Closes, and takes `size` bytes at `data`, which stay the caller's.
    /// \return kStatusInvalidAccessMode without any access flag; kStatusInvalidArgument for a null
    ///         pointer or a negative size; kStatusInsufficientMemory.
    [[nodiscard]] Status Open(void* data, std::int64_t size, std::uint32_t access) noexcept;

    [[nodiscard]] Status Read(void* buffer, std::int64_t length,
                              std::int64_t& count) noexcept override;
    /// Writes what fits into the existing size, and gives 0; kStatusEndOfData if nothing fits.
    [[nodiscard]] Status Write(const void* data, std::int64_t length,
                               std::int64_t& count) noexcept override;
    /// At the end of the content it gives 0 with a count of 0.
    [[nodiscard]] Status ReadAt(void* buffer, std::int64_t length, SeekMode mode,
                                std::int64_t offset, std::int64_t& count) noexcept override;
    /// Copies at most the room behind the position.
    [[nodiscard]] Status CopyFrom(Stream& source, SeekMode mode, std::int64_t offset,
                                  std::int64_t length, std::int64_t& count) noexcept override;
    /// kStatusUnsupportedOperation.
    [[nodiscard]] Status SetSize(std::int64_t newSize) noexcept override;
    [[nodiscard]] Status Compact() noexcept override;
    [[nodiscard]] StreamType GetStreamType() const noexcept override;
    [[nodiscard]] std::unique_ptr<Stream> Clone(Status* status = nullptr) noexcept override;
};

}  // namespace AUX
