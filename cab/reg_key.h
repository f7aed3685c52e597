#pragma once

#include <cstdint>
#include <optional>

#include "foundation/wstring.h"
#include "platform/registry.h"

namespace AUX::CAB {

/// A level of a save: a registry key that is opened late, so that a level that needs no write is
/// not made. Levels form a chain from a root and live on the stack of the save's recursion, each
/// inside the life of the one above. Results are Win32 error codes.
class RegKey {
public:
    enum class IfMissing : std::uint8_t { Fail, Create };

    /// A root: an open key, which stays the caller's.
    explicit RegKey(HKEY borrowed) noexcept : handle(borrowed), root(this) {}
    /// The level below `above`, which has no other.
    /// \param name  Terminated; stays the caller's. Must pass IsKeyName.
    RegKey(RegKey& above, const WCHAR* name) noexcept;
    /// Closes the key.
    ~RegKey();
    RegKey(const RegKey&) = delete;
    RegKey& operator=(const RegKey&) = delete;

    /// Opens the key to read its time. \return as RegOpenKeyExW.
    [[nodiscard]] LSTATUS OpenExisting() noexcept;
    /// Opens the key to change it, with the levels above it where they are missing too.
    [[nodiscard]] LSTATUS OpenForWriting(IfMissing ifMissing) noexcept;
    /// The open key; null while it is not.
    [[nodiscard]] HKEY Get() const noexcept { return handle; }

    /// The time of the key's last change, 0 if there is no telling.
    [[nodiscard]] std::uint64_t LastWrite() noexcept;
    /// Something in the key was written or deleted.
    void NoteChange() noexcept;
    /// The key is there, and with it those above that nobody knows of yet. One that is known to be
    /// new stays so.
    void NoteExisting() noexcept;
    /// The levels between the root and this one, itself counted.
    [[nodiscard]] std::uint32_t Depth() const noexcept { return depth_; }

    /// A value or key below was written or deleted during this save.
    bool written = false;
    /// True: the key is new or was wiped. False: it existed. Empty: not yet known.
    std::optional<bool> newKey;
    /// True: its time is not the container's stamp. Empty: not yet known.
    std::optional<bool> changedOutside;

private:
    [[nodiscard]] bool ExtendPath() noexcept;
    [[nodiscard]] std::uint32_t LevelsUnknownAbove() const noexcept;
    void NoteCreated() noexcept;
    void Close() noexcept;

    HKEY handle = nullptr;
    const WCHAR* pendingName = nullptr;  // null once the path holds it
    std::int32_t pathMark = -1;          // the path's length before this level; -1 on a root
    std::uint64_t lastWrite = 0;         // 0 is unknown
    RegKey* child = nullptr;
    RegKey* parent = nullptr;
    WString path;  // of the root: from its key to the deepest level
    RegKey* root = nullptr;
    std::uint32_t depth_ = 0;
    bool isWritable_ = false;
};

/// Whether a subkey can have this name: 1 to 255 units, no '\\' and no U+0000.
[[nodiscard]] bool IsKeyName(WStringView name) noexcept;

/// The time of a key's last change as one number, 0 if it cannot be read.
[[nodiscard]] std::uint64_t ReadKeyTime(HKEY key) noexcept;

}  // namespace AUX::CAB
