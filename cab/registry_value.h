#pragma once

#include <cstdint>

#include "cab/data_item.h"
#include "platform/registry.h"

/// How the leaves of a bag lie in a registry key: each is a value whose name is the letter of its
/// kind, a dot and the item's name.
namespace AUX::CAB {

/// What the name of a value says. Views of the name.
struct ValueName {
    Kind kind = Kind::None;  ///< None without a letter, and for an unknown one.
    WStringView name;
    bool hasLetter = false;
};
[[nodiscard]] ValueName SplitValueName(WStringView valueName) noexcept;

/// Whether two names are one to the registry.
[[nodiscard]] bool EqualsIgnoringCase(WStringView a, WStringView b) noexcept;

/// Makes the name of a leaf's value.
/// \return false for a kind that is not written, and when memory runs out.
[[nodiscard]] bool MakeValueName(Kind kind, WStringView name, WString& valueName) noexcept;

/// Writes a leaf's value. \return as RegSetValueExW.
[[nodiscard]] LSTATUS WriteLeaf(HKEY key, const WCHAR* valueName, DataItem& leaf) noexcept;

/// A value as it was read. Views into the reader's buffers.
struct RegistryValue {
    WStringView name;
    DWORD type = 0;
    const BYTE* data = nullptr;
    DWORD size = 0;  ///< Bytes.
};

/// Room for the names of most values.
struct NameRoom {
    static constexpr DWORD kUnits = 512;
    WCHAR units[kUnits];
};

/// Goes over the named values of a key. Values that cannot be read are left out.
class ValueReader {
public:
    enum class Data : std::uint8_t { Read, NamesOnly };

    /// \param room  Stays the caller's, and in use.
    ValueReader(HKEY key, Data wanted, NameRoom& room) noexcept
        : key_(key), wanted_(wanted), small_(room.units), name_(room.units) {}
    ~ValueReader();
    ValueReader(const ValueReader&) = delete;
    ValueReader& operator=(const ValueReader&) = delete;

    /// Asks for the largest lengths and makes the buffers.
    [[nodiscard]] LSTATUS Start() noexcept;
    /// \return false at the end.
    [[nodiscard]] bool Next(RegistryValue& value) noexcept;
    /// Whether there was a value that could not be read.
    [[nodiscard]] bool HasSkipped() const noexcept { return hasSkipped_; }

private:
    HKEY key_;
    Data wanted_;
    WCHAR* small_;
    WCHAR* name_;
    DWORD nameUnits_ = NameRoom::kUnits;
    BYTE* data_ = nullptr;
    DWORD dataBytes_ = 0;
    DWORD count_ = 0;
    DWORD index_ = 0;
    bool hasSkipped_ = false;
};

/// A value in the form in which an item takes it.
struct ReadValue {
    Kind kind = Kind::None;
    union {
        bool boolean;
        std::int32_t integer;
        std::int64_t integer64;
        double number = 0;
    };
    WStringView text;
    const BYTE* bytes = nullptr;
    DWORD size = 0;
};

/// Reads a value as one of a kind, None being what its type suggests.
/// \return false if type, size or text do not fit the kind.
[[nodiscard]] bool ReadAs(const RegistryValue& value, Kind expected, ReadValue& read) noexcept;

/// Gives the value to an item of its kind, which is then not ItemDirty.
/// \return false, with the item unchanged, if it refuses or memory runs out.
[[nodiscard]] bool TakeValue(DataItem& item, const ReadValue& read) noexcept;

/// The result of a registry call: 0x80070000 plus the code of an error.
[[nodiscard]] constexpr HRESULT ResultOf(LSTATUS status) noexcept {
    return status == ERROR_SUCCESS ? S_OK : static_cast<HRESULT>(0x80070000 | (status & 0xFFFF));
}

/// What the unnamed value says of a key: Array, Dictionary, or the kind whose number it is.
[[nodiscard]] Kind LoadKind(HKEY key) noexcept;

}  // namespace AUX::CAB
