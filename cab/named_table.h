#pragma once

#include "cab/key_table.h"
#include "foundation/allocated.h"

namespace AUX::CAB {

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

private:
    // The length of a key counts its terminator.
    Array<KeyEntry<double>> entries_;
};

}  // namespace AUX::CAB
