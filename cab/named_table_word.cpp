#include <memory>

#include "cab/named_table.h"
#include "platform/gathered.h"

namespace AUX::CAB {

namespace {

constexpr std::uintptr_t kBuiltBit = std::uintptr_t{1} << 63;

NamedTable* BuiltTable(const void* seen) noexcept {
    const auto word = reinterpret_cast<std::uintptr_t>(seen);
    return word & kBuiltBit ? reinterpret_cast<NamedTable*>(word & ~kBuiltBit) : nullptr;
}

std::unique_ptr<NamedTable> Build(const StaticTableHead& head) noexcept {
    std::unique_ptr<NamedTable> table(new (std::nothrow) NamedTable);
    if (!table) return nullptr;
    for (const StaticCase* row = head.Cases(); row->name; ++row) {
        if (!table->Add(row->name, row->number)) return nullptr;
    }
    table->origin = &head;
    return table;
}

// What was built lives to the end of the module, and no longer.
struct StaticTables {
    ~StaticTables() {
        const platform::GatheredWords words = platform::NamedTableWords();
        for (NamedTableWord* word = words.first; word != words.end; ++word) FreeTable(*word);
    }
};

}  // namespace

WStringView StaticTableHead::Name() const noexcept {
    if (name) return name;
    const WStringView whole(variable);
    return whole.substr(0, 2) == WStringView(TEXT("g_")) ? whole.substr(2) : whole;
}

const void* WordFor(const NamedTable* table) noexcept {
    if (!table) return nullptr;
    return reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(table) | kBuiltBit);
}

const NamedTable* TableOf(NamedTableWord& word) noexcept {
    const void* seen = word.load(std::memory_order_acquire);
    if (!seen || BuiltTable(seen)) return BuiltTable(seen);
    std::unique_ptr<NamedTable> table = Build(*static_cast<const StaticTableHead*>(seen));
    if (!table) return nullptr;
    if (!word.compare_exchange_strong(seen, WordFor(table.get()), std::memory_order_acq_rel)) {
        return BuiltTable(seen);  // Another thread was faster; ours goes.
    }
    return table.release();
}

void FreeTable(NamedTableWord& word) noexcept {
    const std::unique_ptr<NamedTable> table(BuiltTable(word.load(std::memory_order_acquire)));
    if (table) word.store(table->origin, std::memory_order_release);
}

NamedTableWord* FindStaticTable(WStringView name) noexcept {
    static const StaticTables owner;
    const platform::GatheredWords words = platform::NamedTableWords();
    for (NamedTableWord* word = words.first; word != words.end; ++word) {
        const void* const seen = word->load(std::memory_order_acquire);
        const NamedTable* const built = BuiltTable(seen);
        const auto* const head = built ? built->origin : static_cast<const StaticTableHead*>(seen);
        if (head && head->Name() == name) return word;
    }
    return nullptr;
}

}  // namespace AUX::CAB
