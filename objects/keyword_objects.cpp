#include "objects/keyword_objects.h"

namespace AUX {

std::uint32_t HashKeyword(const WCHAR* text, std::uint32_t length) noexcept {
    constexpr std::uint32_t kBasis = 2166136261u, kPrime = 16777619u;
    std::uint32_t hash = kBasis;
    for (std::uint32_t i = 0; i < length; ++i) {
        hash = (hash ^ (text[i] & 0xFFu)) * kPrime;
        hash = (hash ^ (text[i] >> 8)) * kPrime;
    }
    return hash & 0x7FFFFFFFu;
}

HRESULT KeywordTableObject::GetValue(BSTR text, LONG* value) noexcept {
    return Give(value, table_.Lookup(text));
}

HRESULT KeywordTableObject::GetDefault(LONG* value) noexcept {
    return Give(value, table_.defaultValue);
}

HRESULT KeywordTableObject::GetCount(ULONG* count) noexcept {
    return Give(count, table_.entries.Count());
}

HRESULT KeywordTableObject::GetEntry(ULONG index, BSTR* name, LONG* value) noexcept {
    if (!name || !value) return E_POINTER;
    *name = nullptr;
    *value = table_.defaultValue;
    if (index >= table_.entries.Count()) return E_INVALIDARG;
    const KeywordEntry& entry = *table_.entries[index];
    if (const HRESULT result = GiveText(name, entry.name.Text(), entry.name.Length())) {
        return result;
    }
    *value = entry.value;
    return S_OK;
}

HRESULT HashedKeywordTableObject::GetValueOfHash(ULONG hash, LONG* value) noexcept {
    return Give(value, table_.LookupHash(hash));
}

HRESULT HashedKeywordTableObject::GetValue(BSTR text, LONG* value) noexcept {
    return Give(value, table_.Lookup(text, static_cast<std::int32_t>(SysStringLen(text))));
}

HRESULT HashedKeywordTableObject::GetDefault(LONG* value) noexcept {
    return Give(value, table_.defaultValue);
}

HRESULT HashedKeywordTableObject::GetCount(ULONG* count) noexcept {
    return Give(count, table_.entries.Count());
}

HRESULT HashedKeywordTableObject::GetEntry(ULONG index, ULONG* hash, LONG* value) noexcept {
    if (!hash || !value) return E_POINTER;
    *hash = 0;
    *value = table_.defaultValue;
    if (index >= table_.entries.Count()) return E_INVALIDARG;
    *hash = table_.entries[index]->hash;
    *value = table_.entries[index]->value;
    return S_OK;
}

}  // namespace AUX
