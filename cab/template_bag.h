#pragma once

#include "cab/data_root.h"
#include "cab/template_set.h"

/// Templates put to use. As TemplateSet's own operations, but nothing throws: an invalid template
/// gives E_INVALIDARG.
namespace AUX::CAB {

[[nodiscard]] HRESULT SelectRoot(TemplateSet& set, WStringView name) noexcept;

/// Makes a bag, with one reference.
/// \param root  Empty: the root that is selected now.
/// \return E_UNEXPECTED without such a root, E_INVALIDARG if it is no dictionary, E_OUTOFMEMORY, or
///         as SelectRoot.
[[nodiscard]] HRESULT MakeBag(TemplateSet& set, WStringView root, DataRoot*& bag) noexcept;

/// Brings an item into the shape of a root, which its bag then keeps alive.
/// \param root  Empty: the first root.
/// \return E_INVALIDARG if the item's kind is another; else as MakeBag. The item is then as it was.
[[nodiscard]] HRESULT ShapeByTemplate(DataItem& item, TemplateSet& set, WStringView root) noexcept;

}  // namespace AUX::CAB
