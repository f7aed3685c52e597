#pragma once

#include "cab/data_array.h"
#include "cab/data_dictionary.h"
#include "platform/registry.h"

/// Containers from registry keys. The layout stands in docs/attribute-bags.md.
namespace AUX::CAB {

/// Keys below this many levels are not read, as the registry itself has no deeper ones.
inline constexpr std::uint32_t kMaxKeyDepth = 512;

/// Takes a key over into a container, under its bag's lock. A dictionary keeps the keys that the
/// registry lacks; they count as not saved there. An array becomes what the key holds.
/// \param key   Borrowed; null means that `path` begins with the name of a root, such as "HKCU".
/// \param path  Below `key`; null or empty means the key itself.
/// \return 0, also where single values did not fit (the container is then ItemChildrenRemoved, so
///         that the next incremental save brings the key in step); E_INVALIDARG for an item that
///         is no container and a path without a root; the error of the key, with the item
///         untouched, if it cannot be opened; E_FAIL if it cannot be read.
[[nodiscard]] HRESULT LoadFromRegistry(DataItem& item, HKEY key, const WCHAR* path) noexcept;

/// Take over what a key holds, without the key's time.
/// \param complete  May be null. Gets whether all of this container was taken in; those below tell
///                  by their flags. Of an array: whether every index from 0 to the last was there
///                  and was taken in; names that are no index do not count.
/// \return false if the key cannot be read.
[[nodiscard]] bool LoadDic(DataDictionary& dictionary, HKEY key, bool* complete) noexcept;
[[nodiscard]] bool LoadArray(DataArray& array, HKEY key, bool* complete) noexcept;

/// Opens what a full path, such as "HKCU\\Software", begins with.
/// \param rest  Gets the path below the root.
/// \return null if it names no root that is known.
[[nodiscard]] HKEY SplitRoot(WStringView fullPath, WStringView& rest) noexcept;

}  // namespace AUX::CAB
