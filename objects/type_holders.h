#pragma once

#include "automation/type_info_holder.h"

/// The type information of the family's dual interfaces: a holder for each, made when the module
/// starts. Each loads its description on first use, from the one library that they share.
namespace AUX {

/// Gives the type library that describes the family.
using TypeLibraryLoader = HRESULT (*)(ITypeLib** library) noexcept;

/// Makes the holders. Called when the module starts, on one thread.
/// \param loader  May be null: the objects then answer calls by name with kNoTypes.
void StartTypes(TypeLibraryLoader loader) noexcept;
/// Ends them and gives the library back. Called when the module ends; no call runs any more.
void EndTypes() noexcept;

/// What a call by name gives where there is no type information.
inline constexpr HRESULT kNoTypes = TYPE_E_ELEMENTNOTFOUND;

/// The place of an interface's holder; null outside of StartTypes and EndTypes.
template <class Interface>
inline constinit TypeInfoHolder* heldTypes = nullptr;

template <class Interface>
[[nodiscard]] TypeInfoHolder* TypesOf() noexcept {
    return heldTypes<Interface>;
}

}  // namespace AUX
