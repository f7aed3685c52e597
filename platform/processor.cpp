#include "platform/processor.h"

#include <x86intrin.h>

namespace platform {

// The compiler's own questions also ask the system; they are an extension that both builds have.
bool HasAvx512Bytes() noexcept {
    __builtin_cpu_init();  // It may be asked before the run-time has done so.
    return __builtin_cpu_supports("avx512bw") != 0;
}

bool HasAvx512Compress() noexcept {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("avx512vbmi") &&
           __builtin_cpu_supports("pclmul");
}

bool HasWideBitCount() noexcept {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vpopcntdq");
}

std::uint64_t TimeStamp() noexcept { return __rdtsc(); }

}  // namespace platform
