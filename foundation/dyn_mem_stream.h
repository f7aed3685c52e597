#pragma once

#include "foundation/block_stream.h"

namespace AUX {

/// Owns its bytes, a block of AUX::Alloc.
class DynMemStore final : public BlockStore {
public:
    ~DynMemStore() override;
    Status Close() noexcept override;

    std::int64_t growth = 0;
};

/// A memory block that grows as it is written. Reading and writing do not look at the access flags;
/// CopyFrom needs kAccessWrite.
class DynMemStream final : public BlockStream {
public:
    /// Closes, and begins with `initialSize` bytes of 0.
    /// \param growth  How the block grows. 1 or more: to a multiple of so many bytes. -1, -2, -3,
    ///                -4: by the whole, a half, a third and a quarter of what it has; a number
    ///                below stands for -4, and 0 for -2.
    /// \return kStatusInvalidArgument for a negative size; kStatusInsufficientMemory. After a
    ///         failure the stream is closed.
    [[nodiscard]] Status Open(std::int64_t initialSize, std::int64_t growth) noexcept;

    [[nodiscard]] Status Read(void* buffer, std::int64_t length,
                              std::int64_t& count) noexcept override;
    /// Makes room behind the position as needed; on a failure nothing is written.
    [[nodiscard]] Status Write(const void* data, std::int64_t length,
                               std::int64_t& count) noexcept override;
    /// At the end of the content it gives 0 with a count of 0.
    [[nodiscard]] Status ReadAt(void* buffer, std::int64_t length, SeekMode mode,
                                std::int64_t offset, std::int64_t& count) noexcept override;
    /// Makes room for all of `length` first. If the source ends early the size stays so, and the
    /// bytes that it did not give are 0.
    [[nodiscard]] Status CopyFrom(Stream& source, SeekMode mode, std::int64_t offset,
                                  std::int64_t length, std::int64_t& count) noexcept override;
    /// \return kStatusInsufficientMemory.
    [[nodiscard]] Status SetSize(std::int64_t newSize) noexcept override;
    [[nodiscard]] Status Compact() noexcept override;
    [[nodiscard]] Status SetAccess(std::uint32_t access) noexcept override;
    [[nodiscard]] StreamType GetStreamType() const noexcept override;
    [[nodiscard]] std::unique_ptr<Stream> Clone(Status* status = nullptr) noexcept override;

private:
    [[nodiscard]] DynMemStore* Own() const noexcept { return static_cast<DynMemStore*>(store); }
    Status WriteAny(const void* data, std::int64_t length, std::int64_t& count) noexcept;
    Status MakeRoom(std::int64_t newSize) noexcept;
    void ClearFrom(std::int64_t start) noexcept;
};

}  // namespace AUX
