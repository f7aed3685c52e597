#pragma once

/// Changes between numbers, truth values and texts of automation.

#include "platform/posix/variant_types.h"

namespace platform {

/// Makes `made`, whose kind is the wanted one, of `source`, which is no reference. Numbers are
/// rounded to the nearest, halves to the even one; an empty value is 0 or no text. Texts are
/// decimal, whatever the locale.
/// \return DISP_E_TYPEMISMATCH if there is no such change, DISP_E_OVERFLOW, E_OUTOFMEMORY.
[[nodiscard]] HRESULT ChangeNumber(VARIANT& made, const VARIANT& source);

}  // namespace platform
