#include "platform/processor.h"

BOOL IsProcessorFeaturePresent(DWORD feature) noexcept {
    bool isPresent = false;
    if (feature == PF_SSE4_2_INSTRUCTIONS_AVAILABLE) isPresent = __builtin_cpu_supports("sse4.2");
    if (feature == PF_AVX2_INSTRUCTIONS_AVAILABLE) isPresent = __builtin_cpu_supports("avx2");
    return isPresent ? TRUE : FALSE;
}
