#include "cab/named_table.h"

namespace AUX::CAB {

namespace {
constexpr std::uint32_t kTailBytes = sizeof(WCHAR);
}

NamedTable::~NamedTable() {
    for (const KeyEntry<double>& entry : entries_) Free(entry.key);
}

bool NamedTable::Add(WStringView name, double number) noexcept {
    WCHAR* const key = CopyKey(name);
    if (!key) return false;
    const std::uint32_t bytes = KeyBytes(name) + kTailBytes;
    const std::int32_t found = FindKey(entries_, key, KeyBytes(name), kTailBytes);
    if (found >= 0) {
        entries_[static_cast<std::uint32_t>(found)].value = number;
        Free(key);
        return true;
    }
    if (entries_.InsertAt(static_cast<std::uint32_t>(~found), {key, bytes, number})) return true;
    Free(key);
    return false;
}

const double* NamedTable::Find(WStringView name) const noexcept {
    const std::int32_t found = FindKey(entries_, name.data(), KeyBytes(name), kTailBytes);
    return found >= 0 ? &entries_[static_cast<std::uint32_t>(found)].value : nullptr;
}

const WCHAR* NamedTable::NameOf(double number) const noexcept {
    for (std::uint32_t i = entries_.Count(); i-- > 0;) {
        if (entries_[i].value == number) return static_cast<const WCHAR*>(entries_[i].key);
    }
    return nullptr;
}

}  // namespace AUX::CAB
