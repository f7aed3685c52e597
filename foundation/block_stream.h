#pragma once

#include <cstring>

#include "foundation/stream.h"

namespace AUX {

/// A store whose bytes lie in memory. Whether it owns them is the matter of the classes below it.
class BlockStore : public StreamStore {
public:
    [[nodiscard]] bool IsValid() const noexcept override { return data != nullptr; }

    char* data = nullptr;
    std::uint32_t access = 0;
};

/// What streams over memory have in common. Not thread-safe.
class BlockStream : public Stream {
public:
    [[nodiscard]] std::uint32_t GetAccess() const noexcept override;
    [[nodiscard]] Status ReleaseView() noexcept override;
    [[nodiscard]] void* GetData() noexcept override;

protected:
    [[nodiscard]] BlockStore* Block() const noexcept { return static_cast<BlockStore*>(store); }

    /// Whether the open stream has the access. \return kStatusInvalidAccessMode if not.
    [[nodiscard]] Status NeedAccess(std::uint32_t access) const noexcept;

    /// Reads from the position on, which must have been checked by CheckTransfer.
    Status ReadBytes(void* buffer, std::int64_t length, std::int64_t& count) noexcept;

    /// As ReadBytes, with that check.
    Status ReadChecked(void* buffer, std::int64_t length, std::int64_t& count) noexcept;

    /// As ReadAt, once the access is settled.
    Status ReadBytesAt(void* buffer, std::int64_t length, SeekMode mode, std::int64_t offset,
                       std::int64_t& count) noexcept;

    /// Moves 4 to 16 bytes, the size of single values, without a call. \return false for others.
    static bool MoveValue(void* to, const void* from, std::int64_t length) noexcept {
        if (length < 4 || length > 16) return false;
        if (length < 8) {
            MoveEnds<std::uint32_t>(to, from, length);
        } else {
            MoveEnds<std::uint64_t>(to, from, length);
        }
        return true;
    }

    /// Puts bytes at the position, where there is room for them, and moves behind them.
    void PutBytes(const void* bytes, std::int64_t length) noexcept {
        std::memmove(Block()->data + position, bytes, static_cast<std::size_t>(length));
        position += length;
    }

    /// The place in a source that a copy begins at, and how much a source on the same store holds
    /// behind it before the copy makes room for itself.
    struct CopySource {
        Stream& stream;
        std::int64_t start = 0;
        std::int64_t available = 0;
    };
    Status SeekSource(CopySource& source, SeekMode mode, std::int64_t offset) noexcept;

    /// Reads from the source straight to the position, where there is room for `length` bytes, and
    /// moves both streams on.
    Status CopyIn(const CopySource& source, std::int64_t length, std::int64_t& count) noexcept;

private:
    /// Moves one to two words of bytes as two words that may overlap, both read before one is
    /// written.
    template <class Word>
    static void MoveEnds(void* to, const void* from, std::int64_t length) noexcept {
        const std::int64_t last = length - static_cast<std::int64_t>(sizeof(Word));
        Word words[2];
        std::memcpy(&words[0], from, sizeof(Word));
        std::memcpy(&words[1], static_cast<const char*>(from) + last, sizeof(Word));
        std::memcpy(to, &words[0], sizeof(Word));
        std::memcpy(static_cast<char*>(to) + last, &words[1], sizeof(Word));
    }
};

}  // namespace AUX
