#include "platform/processor.h"

BOOL IsProcessorFeaturePresent(DWORD feature) noexcept {
    return feature == PF_AVX2_INSTRUCTIONS_AVAILABLE && __builtin_cpu_supports("avx2") ? TRUE
                                                                                       : FALSE;
}
