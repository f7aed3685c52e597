#pragma once

#include "automation/keyword_table.h"
#include "objects/frame.h"

namespace AUX {

/// The hash that the root starts with: FNV-1a of 32 bits over the bytes of the units, the low byte
/// of each first, without the topmost bit, since a table orders hashes of 31 bits only.
[[nodiscard]] std::uint32_t HashKeyword(const WCHAR* text, std::uint32_t length) noexcept;

/// A KeywordTable that keeps names. Read-only, so any thread.
class KeywordTableObject final : public DualObject<IKeywordTable> {
public:
    explicit KeywordTableObject(bool isCaseSensitive) noexcept : table_(nullptr, isCaseSensitive) {}

    /// The table itself, for the maker.
    [[nodiscard]] KeywordTable& Table() noexcept { return table_; }

    /// The default for a name that is not there; null counts as empty.
    HRESULT STDMETHODCALLTYPE GetValue(BSTR text, LONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetDefault(LONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetCount(ULONG* count) noexcept override;
    /// \return E_INVALIDARG, with the default and no name, for an index past the end.
    HRESULT STDMETHODCALLTYPE GetEntry(ULONG index, BSTR* name, LONG* value) noexcept override;

private:
    KeywordTable table_;
};

/// A KeywordTable that keeps hashes alone. Read-only, so any thread.
class HashedKeywordTableObject final : public DualObject<IHashedKeywordTable> {
public:
    HashedKeywordTableObject(KeywordHash hash, bool isCaseSensitive) noexcept
        : table_(hash, isCaseSensitive) {}

    [[nodiscard]] KeywordTable& Table() noexcept { return table_; }

    /// The hash is that of the whole name, in small letters if the table isn't case-sensitive.
    HRESULT STDMETHODCALLTYPE GetValueOfHash(ULONG hash, LONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetValue(BSTR text, LONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetDefault(LONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetCount(ULONG* count) noexcept override;
    /// \return E_INVALIDARG, with the default and 0, for an index past the end.
    HRESULT STDMETHODCALLTYPE GetEntry(ULONG index, ULONG* hash, LONG* value) noexcept override;

private:
    KeywordTable table_;
};

}  // namespace AUX
