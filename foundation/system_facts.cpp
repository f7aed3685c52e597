#include "foundation/system_facts.h"

#include "platform/processor.h"

namespace AUX {
namespace {

constinit SystemFacts facts{};

}  // namespace

const SystemFacts& Facts() noexcept { return facts; }

void memory::LearnFacts() noexcept {
    facts.version.dwOSVersionInfoSize = sizeof(facts.version);
    (void)GetVersionExA(
        &facts.version);  // On failure the version stays 0, which is older than all.
    GetSystemInfo(&facts.machine);
    facts.hasPopcnt = IsProcessorFeaturePresent(PF_SSE4_2_INSTRUCTIONS_AVAILABLE) != FALSE;
    facts.hasAvx2 = IsProcessorFeaturePresent(PF_AVX2_INSTRUCTIONS_AVAILABLE) != FALSE;
    facts.hasWideBitCount = platform::HasWideBitCount();
}

}  // namespace AUX
