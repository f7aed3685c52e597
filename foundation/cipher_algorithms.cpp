#include "foundation/cipher_algorithms.h"

#include <atomic>

namespace AUX {
namespace {

using platform::AlgorithmHandle;

constinit std::atomic<BCRYPT_ALG_HANDLE> aes{nullptr};
constinit std::atomic<BCRYPT_ALG_HANDLE> md5{nullptr};

bool SetCbc(const AlgorithmHandle& algorithm) noexcept {
    WCHAR mode[] = TEXT("ChainingModeCBC");
    return BCRYPT_SUCCESS(BCryptSetProperty(algorithm.Get(), BCRYPT_CHAINING_MODE,
                                            reinterpret_cast<PUCHAR>(mode), sizeof mode, 0));
}

// Two threads may open it at the same time; the second one's is closed again.
BCRYPT_ALG_HANDLE Open(std::atomic<BCRYPT_ALG_HANDLE>& shared, const WCHAR* id) noexcept {
    AlgorithmHandle opened;
    if (!BCRYPT_SUCCESS(BCryptOpenAlgorithmProvider(opened.Put(), id, nullptr, 0))) return nullptr;
    if (&shared == &aes && !SetCbc(opened)) return nullptr;
    BCRYPT_ALG_HANDLE present = nullptr;
    return shared.compare_exchange_strong(present, opened.Get()) ? opened.Detach() : present;
}

BCRYPT_ALG_HANDLE Get(std::atomic<BCRYPT_ALG_HANDLE>& shared, const WCHAR* id) noexcept {
    const BCRYPT_ALG_HANDLE present = shared.load(std::memory_order_acquire);
    return present ? present : Open(shared, id);
}

}  // namespace

BCRYPT_ALG_HANDLE AesCbc() noexcept { return Get(aes, BCRYPT_AES_ALGORITHM); }

BCRYPT_ALG_HANDLE Md5() noexcept { return Get(md5, BCRYPT_MD5_ALGORITHM); }

void CloseCipherAlgorithms() noexcept {
    const AlgorithmHandle first(aes.exchange(nullptr));
    const AlgorithmHandle second(md5.exchange(nullptr));
}

}  // namespace AUX
