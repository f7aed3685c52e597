#pragma once

#include <memory>

#include "cab/kinds.h"
#include "cab/value_spec.h"
#include "foundation/allocated.h"

namespace AUX::CAB {

inline constexpr std::uint32_t SpecTemp = 1;     ///< Items of this declaration are ItemTransient.
inline constexpr std::uint32_t SpecInclude = 2;  ///< Stands for an included set.
inline constexpr std::uint32_t SpecLoose = 8;    ///< The first entry declares every child.

/// What a template declares of an item. The template owns it and all that it points to; read by any
/// thread. Lies in arrays that end with a zeroed record.
struct ItemSpec {
    const WCHAR* name;  ///< The key; null for an include.
    Kind kind;
    std::uint32_t flags;
    union {
        std::int64_t count;  ///< Of containers: the entries, without the end record.
        std::uint8_t defaultBool;
        std::int32_t defaultInt;
        std::int64_t defaultInt64;
        double defaultDouble;
        const WCHAR* defaultString;  ///< May be null.
    };
    union {
        const ValueSpec* values;  ///< Of leaves; may be null.
        const ItemSpec* entries;  ///< Of containers; may be null.
    };

    [[nodiscard]] bool IsLoose() const noexcept { return (flags & SpecLoose) != 0; }
};
static_assert(sizeof(ItemSpec) == 32);

/// The declaration at a position of a dictionary's spec, counted across included sets, which come
/// first. A loose spec has one declaration for every position.
/// \param total  May be null; gets the number of declarations.
/// \return null past the end.
[[nodiscard]] const ItemSpec* SpecAt(const ItemSpec& spec, std::int64_t index,
                                     std::int64_t* total = nullptr) noexcept;

/// Calls `visit` with each declaration of a dictionary's spec in the order of SpecAt, in one walk,
/// until it gives false. \return false if it did.
template <class Visit>
bool ForEachSpec(const ItemSpec& spec, Visit&& visit) {
    if (!spec.entries) return true;
    for (std::int64_t i = 0; i < spec.count; ++i) {
        const ItemSpec& entry = spec.entries[i];
        if (!(entry.flags & SpecInclude ? ForEachSpec(entry, visit) : visit(entry))) return false;
    }
    return true;
}

/// Keeps a template alive for the item that owns the handle, and names a declaration in it.
class TemplateHandle : public Allocated {
public:
    virtual ~TemplateHandle() = default;

    /// Null if there is none (any more).
    [[nodiscard]] virtual const ItemSpec* GetSpec() noexcept = 0;
    /// What the handle keeps alive, as a mark to compare; null if it keeps nothing.
    [[nodiscard]] virtual const void* Kept() const noexcept { return nullptr; }
    /// Another handle on the same declaration. \return null when memory runs out.
    [[nodiscard]] virtual std::unique_ptr<TemplateHandle> Clone() noexcept { return nullptr; }
};

}  // namespace AUX::CAB
