#include "platform/processor.h"

namespace platform {

// The compiler's own question also asks the system; it is an extension that both builds have.
bool HasAvx512Compress() noexcept { return __builtin_cpu_supports("avx512vbmi2") != 0; }

}  // namespace platform
