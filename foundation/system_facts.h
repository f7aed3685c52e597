#pragma once

#include "platform/system.h"

namespace AUX {

/// What the library asks the system once, when its memory manager starts. Zero before.
struct SystemFacts {
    OSVERSIONINFOA version;
    SYSTEM_INFO machine;
    bool hasPopcnt;  // the instruction that counts bits, which came with SSE 4.2
    bool hasAvx2;
    bool hasWideBitCount;  // AVX-512 with a count of its own
};

/// The facts, constant from the start on.
[[nodiscard]] const SystemFacts& Facts() noexcept;

namespace memory {

/// Asks the system, for the manager's start.
void LearnFacts() noexcept;

}  // namespace memory
}  // namespace AUX
