#pragma once

#include <cstdint>

#include "foundation/allocated.h"
#include "foundation/array.h"
#include "foundation/wstring.h"

namespace AUX {

/// One name and its number. Counted; made with one reference.
struct KeywordEntry : Allocated {
    std::int32_t references = 1;
    std::uint32_t hash = 0;  ///< Of tables that hash.
    std::int32_t value = 0;
    WString name;  ///< Empty in tables that hash.
};

/// Hashes a text; `length` in UTF-16 units. Hashes are ordered by the sign of their difference,
/// which is an order among those of 31 bits only: a function that gives more may lose names.
using KeywordHash = std::uint32_t (*)(const WCHAR* text, std::uint32_t length);

/// Turns names into small numbers. Built from one line of text such as "*:1|none:0|best:2"; holds
/// only what differs from the default. Not thread-safe while it is built, then read by any thread.
class KeywordTable {
public:
    KeywordTable() noexcept = default;
    /// \param hash  Null: names are kept, and compared as texts. Else only hashes are kept, and two
    ///              names of one hash are one.
    KeywordTable(KeywordHash hash, bool isCaseSensitive) noexcept
        : hashFunction(hash), caseSensitive(isCaseSensitive) {}
    ~KeywordTable() { RemoveAll(); }
    KeywordTable(const KeywordTable&) = delete;
    KeywordTable& operator=(const KeywordTable&) = delete;

    /// Builds the table anew. Fields are parted by '|', and are a key, or a key, ':' and a value:
    /// one character, or '-' and one, whose code less 48 counts. The key "*" of the very first
    /// field sets the default; without a value a key gets the truth value that the default, 0 or 1,
    /// is not. What is out of range gets the default, and what has that is not kept: so of two
    /// fields with one key the later counts, unless it has the default. A field that cannot be read
    /// is passed over. When memory runs out the table ends with what it has by then.
    /// \param spec    May be null.
    /// \param prefix  Stands before each key in its name.
    void Parse(WStringView spec, std::int32_t minValue, std::int32_t maxValue,
               std::int32_t newDefault, WStringView prefix) noexcept;

    /// The number of a name; the default for one that is not there, and when memory runs out.
    /// \param text    May be null.
    /// \param length  Units; below 0 for all. Only tables that hash take a part of the text.
    [[nodiscard]] std::int32_t Lookup(const WCHAR* text, std::int32_t length = -1) const noexcept;

    /// The number of a hash, or the default.
    [[nodiscard]] std::int32_t LookupHash(std::uint32_t hash) const noexcept;

    /// \return the index of an entry, or the ones' complement of the index where it belongs.
    [[nodiscard]] std::int32_t FindName(const WCHAR* name) const noexcept;
    [[nodiscard]] std::int32_t FindHash(std::uint32_t hash) const noexcept;

    std::int32_t defaultValue = 0;
    KeywordHash hashFunction = nullptr;
    bool caseSensitive = false;
    /// Sorted by the names or the hashes.
    Array<KeywordEntry*> entries;

private:
    void RemoveAll() noexcept;
    /// \return false when memory runs out.
    [[nodiscard]] bool Put(WString& name, std::int32_t value) noexcept;
    [[nodiscard]] int CompareNames(const WCHAR* a, const WCHAR* b) const noexcept;
};

}  // namespace AUX
