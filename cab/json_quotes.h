#pragma once

#include <atomic>

#include "platform/base.h"

namespace AUX::CAB {

/// Whether any text that this process parsed had an escaped quote. Set once, never cleared: texts
/// that are written as they were read are not searched for hidden quotes before.
extern constinit std::atomic<bool> escapedQuoteSeen;

/// Stands in stripped text for the quote of an escape, so that every quote there ends or begins a
/// string.
inline constexpr WCHAR kHiddenQuote = 1;

}  // namespace AUX::CAB
