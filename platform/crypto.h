#pragma once

/// Ciphers and digests under the names of Windows' library for them (bcrypt.h); natively libcrypto
/// stands behind them.

#include "platform/unique_handle.h"

#ifdef _WIN32
#include <bcrypt.h>
#else
#include "platform/posix/crypto_calls.h"
#endif

namespace platform {

struct AlgorithmTraits {
    using Value = BCRYPT_ALG_HANDLE;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { BCryptCloseAlgorithmProvider(value, 0); }
};
/// Owns an algorithm.
using AlgorithmHandle = UniqueHandle<AlgorithmTraits>;

struct CipherKeyTraits {
    using Value = BCRYPT_KEY_HANDLE;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { BCryptDestroyKey(value); }
};
/// Owns a cipher's key, which is wiped at its end.
using CipherKey = UniqueHandle<CipherKeyTraits>;

struct DigestTraits {
    using Value = BCRYPT_HASH_HANDLE;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value value) noexcept { BCryptDestroyHash(value); }
};
/// Owns a digest under way.
using DigestHandle = UniqueHandle<DigestTraits>;

}  // namespace platform
