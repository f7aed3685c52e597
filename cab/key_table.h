#pragma once

#include <cstdint>

#include "foundation/array.h"
#include "foundation/wstring_view.h"

/// Sorted tables of keys: dictionaries, tables of named numbers, the table of object handlers.
namespace AUX::CAB {

/// One row. The key is a block of AUX::Alloc that the table's owner frees.
template <class Value>
struct KeyEntry {
    void* key;
    std::uint32_t keyBytes;
    Value value;
};

/// Orders two keys: the shorter first, equal ones by their bytes. \return below, at or above 0.
[[nodiscard]] int CompareKeys(const void* a, std::uint32_t aBytes, const void* b,
                              std::uint32_t bBytes) noexcept;

namespace key_table_detail {
[[nodiscard]] std::int32_t Find(const void* entries, std::uint32_t count, const void* key,
                                std::uint32_t keyBytes, std::uint32_t tailBytes) noexcept;
}

/// Finds a key. \return its index, or the ones' complement of the index where it belongs.
/// \param tailBytes  What the lengths in the table count beyond the key, such as a terminator.
template <class Value>
[[nodiscard]] std::int32_t FindKey(const Array<KeyEntry<Value>>& table, const void* key,
                                   std::uint32_t keyBytes, std::uint32_t tailBytes = 0) noexcept {
    static_assert(sizeof(KeyEntry<Value>) == 24, "all tables share one search");
    return key_table_detail::Find(table.Data(), table.Count(), key, keyBytes, tailBytes);
}

/// The bytes of a text that is a key, without a terminator.
constexpr std::uint32_t KeyBytes(WStringView text) noexcept {
    return static_cast<std::uint32_t>(text.size() * sizeof(WCHAR));
}

/// The largest key, in UTF-16 units: its bytes are counted in 32 bits.
inline constexpr std::size_t kMaxKeyUnits = 0x3FFFFFFF;

/// Copies a text with a terminator into a block of AUX::Alloc; null when memory runs out.
[[nodiscard]] WCHAR* CopyKey(WStringView text) noexcept;

}  // namespace AUX::CAB
