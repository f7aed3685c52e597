#include "foundation/library.h"

#include "foundation/cipher_algorithms.h"
#include "foundation/status.h"
#include "foundation/status_category.h"

namespace AUX {
namespace {

constexpr std::uint32_t kCodecs = static_cast<std::uint32_t>(StatusCategory::Codecs);

}  // namespace

void StartLibrary() noexcept {
    // Without its category a code of the codecs still has its message; only its origin reads
    // differently.
    (void)RegisterStatusCategory(kCodecs, nullptr, 0, "Codecs");
}

void EndLibrary() noexcept {
    UnregisterStatusCategory(kCodecs);
    CloseCipherAlgorithms();
}

}  // namespace AUX
