#pragma once

#include <list>
#include <map>
#include <set>

#include "cab/item_spec.h"
#include "cab/library_allocator.h"

namespace AUX::CAB {

template <class Value>
using TextMap =
    std::map<KeyText, Value, KeyTextOrder, LibraryAllocator<std::pair<const KeyText, Value>>>;

/// A set of declarations, in the order of its template: the included sets, then its own items, then
/// a zeroed record. The array does not move once another declaration may point into it.
struct SpecSet {
    /// A dictionary that dotted keys have made, and that is still being read.
    struct Nested {
        std::size_t index;  ///< Of its entry here.
        SpecSet* set;
    };

    Vector<ItemSpec> entries;
    Vector<Nested> nested;
    /// The first item, an included one before its own; once it is complete. Not of sets that dotted
    /// keys have made, which move.
    const ItemSpec* first = nullptr;
    bool isComplete = false;

    /// Without the zeroed record. Of a set that is being read, what it has so far.
    [[nodiscard]] std::int64_t Count() const noexcept {
        return static_cast<std::int64_t>(entries.size()) - (isComplete ? 1 : 0);
    }
};

/// The blocks of one ValueSpec, in numbers that are aligned for it.
using ValueBlock = Vector<NumberRange>;

/// The word of a named table that a template has made.
struct OwnTable {
    OwnTable() noexcept = default;
    ~OwnTable() { FreeTable(word); }
    OwnTable(const OwnTable&) = delete;
    OwnTable& operator=(const OwnTable&) = delete;
    NamedTableWord word = nullptr;
};

/// Everything that the declarations of one root need, and the root's own. Read by any thread once
/// it is made; only moved before.
struct CompiledTemplate {
    [[nodiscard]] WStringView Intern(WStringView text);
    [[nodiscard]] SpecSet& AddAnonymousSet();

    std::set<KeyText, KeyTextOrder, LibraryAllocator<KeyText>> strings;
    TextMap<SpecSet> sets;
    std::list<SpecSet, LibraryAllocator<SpecSet>> anonymousSets;
    TextMap<ValueBlock> values;
    TextMap<OwnTable> tables;
    ItemSpec root{};
};

}  // namespace AUX::CAB
