#pragma once

#include <cstdint>

namespace AUX::CAB {

/// What an item holds. The numbers are part of the automation faces and of every store.
enum class Kind : std::uint32_t {
    None = 0,  ///< An untyped slot; no item of this kind exists.
    Bool = 1,
    Int = 2,     ///< Signed 32 bits.
    Int64 = 3,   ///< Signed 64 bits.
    Double = 4,  ///< IEEE 754.
    String = 5,
    Stream = 6,
    Object = 7,           ///< A counted interface pointer.
    Container = 0x1000,   ///< A template's word for either sort of container; no item has it.
    Array = 0x1001,       ///< An ordered list of items.
    Dictionary = 0x1002,  ///< A sorted list of keys and items.
};

constexpr bool IsContainer(Kind kind) noexcept {
    return kind == Kind::Array || kind == Kind::Dictionary;
}

/// Flags of an item, or'ed together.
inline constexpr std::uint32_t ItemValueSet = 0x01;         ///< Set since the last reset.
inline constexpr std::uint32_t ItemTransient = 0x02;        ///< Not persisted.
inline constexpr std::uint32_t ItemNoReset = 0x04;          ///< A reset leaves it alone.
inline constexpr std::uint32_t ItemNoCopy = 0x08;           ///< Container copies pass it over.
inline constexpr std::uint32_t ItemDirty = 0x10;            ///< Changed since load or save.
inline constexpr std::uint32_t ItemChildrenRemoved = 0x20;  ///< Lost a child since load or save.

/// Flags of Equals, or'ed together.
inline constexpr std::uint32_t kEqualAnyStream = 0x02;
inline constexpr std::uint32_t kEqualAnyObject = 0x04;
inline constexpr std::uint32_t kEqualIgnoreCase = 0x10;

}  // namespace AUX::CAB
