#pragma once

#include <span>

#include "foundation/status_category.h"

namespace AUX::status_detail {

/// A category that the first registration enters.
struct BuiltInCategory {
    std::uint32_t number;
    std::span<const StatusMessage> table;
    const char* name;
};

/// The messages of all categories, in the order of the search.
[[nodiscard]] std::span<const StatusMessage> CommonMessages() noexcept;

/// In the order of entering.
[[nodiscard]] std::span<const BuiltInCategory> BuiltInCategories() noexcept;

}  // namespace AUX::status_detail
