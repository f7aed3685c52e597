#include "automation/keyword_table.h"

#include <algorithm>

#include "platform/letters.h"

namespace AUX {
namespace {

constexpr std::size_t kNone = WStringView::npos;

/// The next field of a list; empty at its end. Separators before it are passed over, and behind it
/// one stays.
WStringView NextField(WStringView& rest) noexcept {
    const std::size_t first = rest.find_first_not_of(WStringView(TEXT("| ")));
    if (first == kNone) return {};
    rest = rest.substr(first);
    const WStringView field = rest.substr(0, rest.find('|'));
    rest = rest.substr(field.size());
    return field;
}

/// One character's number, or its negative. \return false for any other text.
bool ReadValue(WStringView text, std::int32_t& value) noexcept {
    const bool isNegative = text.size() == 2 && text.front() == '-';
    if (text.size() != 1 && !isNegative) return false;
    const std::int32_t digit = text.back() - '0';
    value = isNegative ? -digit : digit;
    return true;
}

/// The search in a sorted list. \param compare  The sign of an entry against what is sought.
template <class Compare>
std::int32_t Search(const Array<KeywordEntry*>& entries, Compare compare) noexcept {
    const std::uint32_t count = entries.Count();
    if (count == 0) return ~0;
    std::uint32_t low = 0;
    std::uint32_t high = count;
    while (high - low >= 2) {
        const std::uint32_t middle = (low + high) / 2;
        const int order = compare(*entries[middle]);
        if (order == 0) return static_cast<std::int32_t>(middle);
        (order < 0 ? low : high) = middle;
    }
    const int order = compare(*entries[low]);
    if (order == 0) return static_cast<std::int32_t>(low);
    // What lies at `high` is known to be larger, or is the end.
    return ~static_cast<std::int32_t>(order < 0 ? low + 1 : low);
}

}  // namespace

void KeywordTable::RemoveAll() noexcept {
    for (KeywordEntry* const entry : entries) {
        if (--entry->references == 0) delete entry;
    }
    entries.Clear();
}

int KeywordTable::CompareNames(const WCHAR* a, const WCHAR* b) const noexcept {
    if (!caseSensitive) return lstrcmpiW(a, b);
    const WStringView first(a);
    const WStringView second(b);
    return first < second ? -1 : second < first ? 1 : 0;
}

void KeywordTable::Parse(WStringView spec, std::int32_t minValue, std::int32_t maxValue,
                         std::int32_t newDefault, WStringView prefix) noexcept {
    RemoveAll();
    defaultValue = newDefault;
    const auto isInRange = [&](std::int32_t value) {
        return minValue <= value && value <= maxValue;
    };
    bool isFirst = true;
    for (WStringView field; !(field = NextField(spec)).empty(); isFirst = false) {
        const std::size_t colon = field.find(':');
        const WStringView key = field.substr(0, colon);
        const WStringView text = colon == kNone ? WStringView() : field.substr(colon + 1);
        std::int32_t value = 0;
        const bool hasValue = ReadValue(text, value);
        if (key == TEXT("*")) {
            if (isFirst && hasValue && isInRange(value)) defaultValue = value;
            continue;
        }
        if (text.empty()) {
            if (defaultValue >= 2) continue;
            value = defaultValue == 0 ? 1 : 0;
        } else if (!hasValue) {
            continue;
        } else if (!isInRange(value)) {
            value = defaultValue;
        }
        if (value == defaultValue) continue;
        WString name;
        if (!name.Assign(prefix) || !name.Append(key) || !Put(name, value)) return;
    }
}

bool KeywordTable::Put(WString& name, std::int32_t value) noexcept {
    std::uint32_t hash = 0;
    if (hashFunction) {
        if (!caseSensitive) CharLowerBuffW(name.Data(), name.Length());
        hash = hashFunction(name.Text(), name.Length());
    }
    const std::int32_t found = hashFunction ? FindHash(hash) : FindName(name.Text());
    if (found >= 0) {
        entries[static_cast<std::uint32_t>(found)]->value = value;
        return true;
    }
    auto* const entry = new (std::nothrow) KeywordEntry;
    if (!entry) return false;
    entry->hash = hash;
    entry->value = value;
    if (!hashFunction) entry->name = std::move(name);
    if (entries.InsertAt(static_cast<std::uint32_t>(~found), entry)) return true;
    delete entry;
    return false;
}

std::int32_t KeywordTable::Lookup(const WCHAR* text, std::int32_t length) const noexcept {
    if (!text || !*text) return defaultValue;
    if (!hashFunction) {
        const std::int32_t found = FindName(text);
        return found >= 0 ? entries[static_cast<std::uint32_t>(found)]->value : defaultValue;
    }
    const WStringView whole =
        length < 0 ? WStringView(text) : WStringView(text, static_cast<std::size_t>(length));
    const auto units = static_cast<std::uint32_t>(whole.size());
    if (caseSensitive) return LookupHash(hashFunction(text, units));
    WString small;
    if (!small.Assign(whole)) return defaultValue;
    CharLowerBuffW(small.Data(), units);
    return LookupHash(hashFunction(small.Text(), units));
}

std::int32_t KeywordTable::LookupHash(std::uint32_t hash) const noexcept {
    const std::int32_t found = FindHash(hash);
    return found >= 0 ? entries[static_cast<std::uint32_t>(found)]->value : defaultValue;
}

std::int32_t KeywordTable::FindName(const WCHAR* name) const noexcept {
    return Search(entries,
                  [&](const KeywordEntry& entry) { return CompareNames(entry.name.Text(), name); });
}

std::int32_t KeywordTable::FindHash(std::uint32_t hash) const noexcept {
    return Search(entries, [&](const KeywordEntry& entry) {
        // Round the circle of 32 bits: the sign of the difference.
        const auto difference = static_cast<std::int32_t>(entry.hash - hash);
        return (difference > 0) - (difference < 0);
    });
}

}  // namespace AUX
