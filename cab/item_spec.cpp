#include "cab/item_spec.h"

namespace AUX::CAB {

namespace {

// Goes down the includes; `index` becomes what is left to count. A set may include itself: its own
// entry then finds no entries that are counted, as its count is 0 while it is read.
const ItemSpec* Walk(const ItemSpec& spec, std::int64_t& index, std::int64_t& total) noexcept {
    const ItemSpec* entry = spec.entries;
    if (!entry) return nullptr;
    std::int64_t own = spec.count;
    for (; own > 0 && (entry->flags & SpecInclude); ++entry, --own) {
        if (const ItemSpec* found = Walk(*entry, index, total)) return found;
    }
    if (own <= 0) return nullptr;
    total += own;
    if (index >= 0 && index < own) return entry + index;
    if (index >= 0) index -= own;
    return nullptr;
}

}  // namespace

const ItemSpec* SpecAt(const ItemSpec& spec, std::int64_t index, std::int64_t* total) noexcept {
    std::int64_t sum = 0;
    if (total) {
        std::int64_t none = -1;
        (void)Walk(spec, none, sum);  // Counts only.
        *total = sum;
    }
    if (index < 0) return nullptr;
    if (spec.IsLoose()) index = 0;
    sum = 0;
    return Walk(spec, index, sum);
}

}  // namespace AUX::CAB
