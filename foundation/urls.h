#pragma once

#include "foundation/wstring.h"

/// Addresses as texts. A null text and an empty one are the same. An output may be the same object
/// as the string whose text is an input. Every failure, of memory too, is false. Any thread may
/// call these.
namespace AUX {

/// Joins a base address and an address relative to it (RFC 3986, section 5; UrlCombineW with no
/// flags). \param combined  Empty after a failure; nothing to join is one.
[[nodiscard]] bool CombineUrl(const WCHAR* base, const WCHAR* relative, WString& combined) noexcept;

}  // namespace AUX
