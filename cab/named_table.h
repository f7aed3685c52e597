#pragma once

#include <atomic>

#include "cab/key_table.h"
#include "foundation/allocated.h"

namespace AUX::CAB {

struct StaticTableHead;

/// Names for numbers. Owns its names. Not thread-safe while it is built, then read by any thread.
class NamedTable : public Allocated {
public:
    NamedTable() noexcept = default;
    ~NamedTable();
    NamedTable(const NamedTable&) = delete;
    NamedTable& operator=(const NamedTable&) = delete;

    /// Adds a name; one that is there takes the new number.
    /// \return false, with nothing changed, when memory runs out.
    [[nodiscard]] bool Add(WStringView name, double number) noexcept;

    /// Looks a name up, with regard to case. \return null if there is none.
    [[nodiscard]] const double* Find(WStringView name) const noexcept;

    /// The name of a number: of several the last in the order of keys; null if there is none.
    [[nodiscard]] const WCHAR* NameOf(double number) const noexcept;

    [[nodiscard]] std::uint32_t Count() const noexcept { return entries_.Count(); }

    /// What it was built from, if that is a static table; else null.
    const StaticTableHead* origin = nullptr;

private:
    // The length of a key counts its terminator.
    Array<KeyEntry<double>> entries_;
};

/// One name of a table that code declares.
struct StaticCase {
    const WCHAR* name;  ///< Null ends the table.
    double number;
};

/// A table that code declares: the head of a StaticNamedTable.
struct StaticTableHead {
    const WCHAR*
        variable;       ///< The name of the variable; a "g_" before it is no part of the table's.
    const WCHAR* name;  ///< The table's name, if it is another one; else null.

    [[nodiscard]] WStringView Name() const noexcept;
    [[nodiscard]] const StaticCase* Cases() const noexcept {
        return reinterpret_cast<const StaticCase*>(this + 1);
    }
};

/// Declares a table in code. The last case has a null name. A NamedTableWord with its address,
/// marked with QVD_NAMED_TABLE_WORD, makes it known to FindStaticTable.
template <std::size_t kCases>
struct StaticNamedTable {
    StaticTableHead head;
    StaticCase cases[kCases];
};

/// Stands for a table: the address of a static one that nobody has asked for yet, or of a
/// NamedTable, which the word owns, with the top bit set. Any thread may use it.
using NamedTableWord = std::atomic<const void*>;

/// The table; a static one is built at the first call, whichever thread makes it.
/// \return null if there is none, or memory ran out.
[[nodiscard]] const NamedTable* TableOf(NamedTableWord& word) noexcept;

/// What a word holds for a table.
[[nodiscard]] const void* WordFor(const NamedTable* table) noexcept;

/// Deletes the table; a static one is built again when it is asked for.
void FreeTable(NamedTableWord& word) noexcept;

/// The word of a static table. \return null if no code of this module declares one of that name.
[[nodiscard]] NamedTableWord* FindStaticTable(WStringView name) noexcept;

}  // namespace AUX::CAB
