#pragma once

#include "cab/data_item.h"

namespace AUX::CAB {

/// Stands in for an item that is missing: of kind None, answers with nothing, refuses every change.
/// One for all; never deleted, and read by any thread.
[[nodiscard]] DataItem& NilItem() noexcept;

}  // namespace AUX::CAB
