#pragma once

#include <memory>

#include "cab/data_item.h"
#include "cab/store.h"

namespace AUX::CAB {

/// Makes an item; a container is filled from its declaration.
/// \param root    The bag that it will belong to; may be null.
/// \param parent  The container that it is meant for; may be null.
/// \param spec    Its declaration, which then names the kind; may be null.
/// \param reader  Gives kind and value; may be null. A kind that is asked for wins over the
///                reader's, which is then not read. A transient item is not read either.
/// \return null for Kind::None and Kind::Container, for a value that cannot be read, and when
///         memory runs out.
[[nodiscard]] std::unique_ptr<DataItem> CreateItem(DataRoot* root, DataItem* parent,
                                                   const ItemSpec* spec, DataReader* reader,
                                                   Kind kind) noexcept;

/// Takes over the value that a reader has. Children that do not fit are passed over.
/// \return false if the value does not fit the item, or memory ran out.
[[nodiscard]] bool ReadItem(DataItem& item, DataReader& reader) noexcept;

}  // namespace AUX::CAB
