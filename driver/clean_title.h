#pragma once

#include "foundation/wstring.h"

/// Makes a short file name of a page's title: of the first 41 characters those that are none of
/// | \ ? * < " : > + [ ] / - and the full stop. Blanks stay, so the name may be empty or blank.
/// \param title   May be null if `length` is 0.
/// \param length  In UTF-16 units.
/// \param output  Replaced; empty when memory runs out.
void CleanTitle(const WCHAR* title, std::uint32_t length, AUX::WString& output) noexcept;
