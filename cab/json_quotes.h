#pragma once

#include <atomic>

namespace AUX::CAB {

/// Whether any text that this process parsed had an escaped quote. Set once, never cleared: texts
/// that are written as they were read are not searched for hidden quotes before.
extern constinit std::atomic<bool> escapedQuoteSeen;

}  // namespace AUX::CAB
