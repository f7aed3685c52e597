#include "cab/key_table.h"

#include <cstring>

namespace AUX::CAB {

int CompareKeys(const void* a, std::uint32_t aBytes, const void* b, std::uint32_t bBytes) noexcept {
    if (aBytes != bBytes) return aBytes < bBytes ? -1 : 1;
    return aBytes ? std::memcmp(a, b, aBytes) : 0;
}

std::int32_t key_table_detail::Find(const void* entries, std::uint32_t count, const void* key,
                                    std::uint32_t keyBytes, std::uint32_t tailBytes) noexcept {
    const auto* const rows = static_cast<const KeyEntry<void*>*>(entries);
    std::uint32_t first = 0;
    std::uint32_t end = count;
    while (first < end) {
        const std::uint32_t middle = first + (end - first) / 2;
        const int order =
            CompareKeys(rows[middle].key, rows[middle].keyBytes - tailBytes, key, keyBytes);
        if (order == 0) return static_cast<std::int32_t>(middle);
        if (order < 0) {
            first = middle + 1;
        } else {
            end = middle;
        }
    }
    return ~static_cast<std::int32_t>(first);
}

WCHAR* CopyKey(WStringView text) noexcept {
    if (text.size() > kMaxKeyUnits) return nullptr;
    auto* const copy = static_cast<WCHAR*>(Alloc((text.size() + 1) * sizeof(WCHAR)));
    if (!copy) return nullptr;
    if (!text.empty()) std::memcpy(copy, text.data(), text.size() * sizeof(WCHAR));
    copy[text.size()] = 0;
    return copy;
}

}  // namespace AUX::CAB
