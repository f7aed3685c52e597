#pragma once

#include <functional>
#include <optional>

#include "cab/data_item.h"
#include "cab/reg_key.h"

/// Containers into registry keys. The layout stands in docs/attribute-bags.md.
namespace AUX::CAB {

/// How to save: bits, or'ed together.
using SaveMode = std::uint32_t;
/// Keep what is in the key and write only changes; without it the key's tree is emptied first.
inline constexpr SaveMode SaveIncremental = 1;
/// A container with a stamp counts as current: the key's time is not read.
inline constexpr SaveMode SaveTrustStamp = 2;
/// The save runs inside a registry transaction. A time read now means nothing, so stamps become 0.
inline constexpr SaveMode SaveTransacted = 4;

/// Saves a container to a key, under its bag's lock. A full save below a path runs in a registry
/// transaction where the system has them: all is written or nothing.
///
/// Nothing of a bag gets lost by an incremental save: what a rebuild of a key deletes and the bag
/// holds is written again, and what could not be written stays ItemDirty for the next save.
/// \param key   Borrowed, with access for all that is to be done; null means that `path` begins
///              with the name of a root, such as "HKCU".
/// \param path  Below `key`; null or empty means the key itself.
/// \return 0 when something was written or deleted, 1 when nothing needed to be; E_INVALIDARG for
///         a path without a root, and for a root itself, of which a save could delete all; E_FAIL
///         if something could not be written (the rest was, unless a transaction was undone); else
///         the error of the key or the transaction.
[[nodiscard]] HRESULT SaveToRegistry(DataItem& item, HKEY key, const WCHAR* path, bool incremental,
                                     bool trustStamp) noexcept;

/// Saves a container to a level of the registry.
/// \param omitDefaults  Leaves at their default are not kept in the key, and a container without
///                      others gets none.
/// \return whether all was written; nothing if there was nothing to write or delete.
[[nodiscard]] std::optional<bool> SaveContainer(DataItemT<0>& item, RegKey& key, bool omitDefaults,
                                                SaveMode mode) noexcept;

/// Saves a child of the container of a level. \param name  Terminated. \return as SaveContainer.
[[nodiscard]] std::optional<bool> SaveChild(DataItem& child, RegKey& key, WStringView name,
                                            bool omitDefaults, SaveMode mode) noexcept;

using NameTest = std::function<bool(WStringView)>;

/// Delete the subkeys, with all below them, or the values of an open key whose names pass a test.
/// The unnamed value stays. Names are all read before the first one goes.
/// \return false if some could not be read or deleted.
[[nodiscard]] bool RegDeleteSubKeys(RegKey& key, const NameTest& test) noexcept;
[[nodiscard]] bool RegDeleteSubValues(RegKey& key, const NameTest& test) noexcept;

}  // namespace AUX::CAB
