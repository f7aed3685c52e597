#pragma once

#include "cab/data_item.h"
#include "cab/reg_key.h"

namespace AUX::CAB {

/// Takes out of a key what its container lacks, before an incremental save writes the rest: of an
/// array everything; of a dictionary the names that FindPath does not find in it, those that say
/// another kind than the item has, and a marker of another kind of container. What goes and the
/// container holds is then to be written: it becomes ItemDirty, or loses its stamp, or the key
/// counts as new.
/// \return false if something could not be read or deleted, or the item is no container.
[[nodiscard]] bool RebuildKey(DataItem& item, RegKey& key) noexcept;

}  // namespace AUX::CAB
