#include "platform/crypto.h"

#include <cstring>
#include <memory>
#include <new>
#include <openssl/evp.h>
#include <string_view>

#include "platform/memory.h"
#include "platform/posix/faults.h"

namespace platform {
namespace {

constexpr ULONG kBlock = 16;

template <auto free>
struct Freed {
    template <class T>
    void operator()(T* value) const noexcept {
        free(value);
    }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, Freed<EVP_CIPHER_CTX_free>>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, Freed<EVP_MD_CTX_free>>;

// Looking an algorithm up costs more than a short text's whole work, so each is looked up once.
// They are never given back: handles may be used while the process ends.
const EVP_MD* Md5() noexcept {
    static const EVP_MD* const md5 = EVP_MD_fetch(nullptr, "MD5", nullptr);
    return md5;
}

const EVP_CIPHER* AesOf(ULONG keyBytes) noexcept {
    static const EVP_CIPHER* const kCiphers[] = {EVP_CIPHER_fetch(nullptr, "AES-128-CBC", nullptr),
                                                 EVP_CIPHER_fetch(nullptr, "AES-192-CBC", nullptr),
                                                 EVP_CIPHER_fetch(nullptr, "AES-256-CBC", nullptr)};
    return keyBytes % 8 == 0 && keyBytes >= 16 && keyBytes <= 32 ? kCiphers[keyBytes / 8 - 2]
                                                                 : nullptr;
}

/// One direction of a key. It knows where its chain stands: a call that goes on from there need not
/// begin anew.
class Direction {
public:
    ~Direction() { SecureZeroMemory(chain_, sizeof chain_); }

    bool SetKey(const EVP_CIPHER* cipher, const BYTE* secret, bool isEncrypting) noexcept {
        context_.reset(EVP_CIPHER_CTX_new());
        return context_ &&
               EVP_CipherInit_ex2(context_.get(), cipher, secret, nullptr, isEncrypting, nullptr) &&
               EVP_CIPHER_CTX_set_padding(context_.get(), 0);
    }
    [[nodiscard]] bool HasKey() const noexcept { return context_ != nullptr; }

    /// `next` is the block of the cipher text that the chain goes on with, before the call that
    /// overwrites it where it is the input.
    bool Run(BYTE* iv, const BYTE* input, BYTE* output, ULONG bytes, bool isEncrypting) noexcept {
        if (bytes == 0) return true;
        const bool goesOn = isUnderWay_ && std::memcmp(iv, chain_, kBlock) == 0;
        isUnderWay_ = false;
        if (!goesOn && !EVP_CipherInit_ex2(context_.get(), nullptr, nullptr, iv, -1, nullptr)) {
            return false;
        }
        if (!isEncrypting) std::memcpy(chain_, input + bytes - kBlock, kBlock);
        int moved = 0;
        if (!EVP_CipherUpdate(context_.get(), output, &moved, input, static_cast<int>(bytes)) ||
            static_cast<ULONG>(moved) != bytes) {
            return false;
        }
        if (isEncrypting) std::memcpy(chain_, output + bytes - kBlock, kBlock);
        std::memcpy(iv, chain_, kBlock);
        isUnderWay_ = true;
        return true;
    }

private:
    CipherContext context_;
    BYTE chain_[kBlock] = {};
    bool isUnderWay_ = false;
};

struct Key {
    ~Key() { SecureZeroMemory(secret, sizeof secret); }

    const EVP_CIPHER* cipher = nullptr;
    BYTE secret[32] = {};
    Direction directions[2];  // deciphering, enciphering
};

struct Digest {
    DigestContext context;
    bool isReusable = false;
    bool hasBegun = false;
    bool isFinished = false;
};

/// What the handle of an algorithm points to.
struct Algorithm {
    bool isDigest;
};
constinit Algorithm aes{false};
constinit Algorithm md5{true};

NTSTATUS Transfer(BCRYPT_KEY_HANDLE handle, const BYTE* input, ULONG inputBytes, BYTE* iv,
                  ULONG ivBytes, BYTE* output, ULONG outputBytes, ULONG* result,
                  bool isEncrypting) noexcept {
    if (!handle) return STATUS_INVALID_HANDLE;
    if (!result || !iv || ivBytes != kBlock || inputBytes > INT32_MAX) {
        return STATUS_INVALID_PARAMETER;
    }
    if (inputBytes % kBlock != 0) return STATUS_INVALID_BUFFER_SIZE;
    *result = inputBytes;
    if (!output) return 0;
    if (outputBytes < inputBytes) return STATUS_BUFFER_TOO_SMALL;
    Key& key = *static_cast<Key*>(handle);
    Direction& direction = key.directions[isEncrypting];
    if (!direction.HasKey() && !direction.SetKey(key.cipher, key.secret, isEncrypting)) {
        return STATUS_NO_MEMORY;
    }
    return direction.Run(iv, input, output, inputBytes, isEncrypting) ? 0 : STATUS_INTERNAL_ERROR;
}

bool IsInjected(const char* call, NTSTATUS& status) noexcept {
    if (!InjectFault(call)) return false;
    status = STATUS_NO_MEMORY;
    return true;
}

}  // namespace
}  // namespace platform

using platform::Digest;
using platform::IsInjected;
using platform::Key;

NTSTATUS BCryptOpenAlgorithmProvider(BCRYPT_ALG_HANDLE* algorithm, LPCWSTR id, LPCWSTR,
                                     ULONG) noexcept {
    NTSTATUS status = 0;
    if (!algorithm || !id) return STATUS_INVALID_PARAMETER;
    if (IsInjected("BCryptOpenAlgorithmProvider", status)) return status;
    const std::u16string_view name = id;
    if (name == BCRYPT_AES_ALGORITHM && platform::AesOf(16)) {
        *algorithm = &platform::aes;
    } else if (name == BCRYPT_MD5_ALGORITHM && platform::Md5()) {
        *algorithm = &platform::md5;
    } else {
        return STATUS_NOT_FOUND;
    }
    return 0;
}

NTSTATUS BCryptCloseAlgorithmProvider(BCRYPT_ALG_HANDLE algorithm, ULONG) noexcept {
    return algorithm ? 0 : STATUS_INVALID_HANDLE;
}

NTSTATUS BCryptSetProperty(BCRYPT_HANDLE object, LPCWSTR property, PUCHAR value, ULONG,
                           ULONG) noexcept {
    NTSTATUS status = 0;
    if (!object) return STATUS_INVALID_HANDLE;
    if (IsInjected("BCryptSetProperty", status)) return status;
    if (object != &platform::aes || std::u16string_view(property) != BCRYPT_CHAINING_MODE ||
        std::u16string_view(reinterpret_cast<LPCWSTR>(value)) != BCRYPT_CHAIN_MODE_CBC) {
        return STATUS_NOT_SUPPORTED;
    }
    return 0;
}

NTSTATUS BCryptGenerateSymmetricKey(BCRYPT_ALG_HANDLE algorithm, BCRYPT_KEY_HANDLE* key, PUCHAR,
                                    ULONG, PUCHAR secret, ULONG secretBytes, ULONG) noexcept {
    NTSTATUS status = 0;
    if (algorithm != &platform::aes) return STATUS_INVALID_HANDLE;
    const EVP_CIPHER* const cipher = platform::AesOf(secretBytes);
    if (!key || !secret || !cipher) return STATUS_INVALID_PARAMETER;
    if (IsInjected("BCryptGenerateSymmetricKey", status)) return status;
    auto made = std::unique_ptr<Key>(new (std::nothrow) Key);
    if (!made) return STATUS_NO_MEMORY;
    made->cipher = cipher;
    std::memcpy(made->secret, secret, secretBytes);
    *key = made.release();
    return 0;
}

NTSTATUS BCryptDestroyKey(BCRYPT_KEY_HANDLE key) noexcept {
    if (!key) return STATUS_INVALID_HANDLE;
    delete static_cast<Key*>(key);
    return 0;
}

NTSTATUS BCryptEncrypt(BCRYPT_KEY_HANDLE key, PUCHAR input, ULONG inputBytes, void*, PUCHAR iv,
                       ULONG ivBytes, PUCHAR output, ULONG outputBytes, ULONG* result,
                       ULONG) noexcept {
    NTSTATUS status = 0;
    if (IsInjected("BCryptEncrypt", status)) return status;
    return platform::Transfer(key, input, inputBytes, iv, ivBytes, output, outputBytes, result,
                              true);
}

NTSTATUS BCryptDecrypt(BCRYPT_KEY_HANDLE key, PUCHAR input, ULONG inputBytes, void*, PUCHAR iv,
                       ULONG ivBytes, PUCHAR output, ULONG outputBytes, ULONG* result,
                       ULONG) noexcept {
    NTSTATUS status = 0;
    if (IsInjected("BCryptDecrypt", status)) return status;
    return platform::Transfer(key, input, inputBytes, iv, ivBytes, output, outputBytes, result,
                              false);
}

NTSTATUS BCryptCreateHash(BCRYPT_ALG_HANDLE algorithm, BCRYPT_HASH_HANDLE* hash, PUCHAR, ULONG,
                          PUCHAR, ULONG, ULONG flags) noexcept {
    NTSTATUS status = 0;
    if (algorithm != &platform::md5) return STATUS_INVALID_HANDLE;
    if (!hash || flags & ~BCRYPT_HASH_REUSABLE_FLAG) return STATUS_INVALID_PARAMETER;
    if (IsInjected("BCryptCreateHash", status)) return status;
    auto made = std::unique_ptr<Digest>(new (std::nothrow) Digest);
    if (made) made->context.reset(EVP_MD_CTX_new());
    if (!made || !made->context ||
        !EVP_DigestInit_ex2(made->context.get(), platform::Md5(), nullptr)) {
        return STATUS_NO_MEMORY;
    }
    made->isReusable = (flags & BCRYPT_HASH_REUSABLE_FLAG) != 0;
    made->hasBegun = true;
    *hash = made.release();
    return 0;
}

NTSTATUS BCryptHashData(BCRYPT_HASH_HANDLE hash, PUCHAR input, ULONG bytes, ULONG) noexcept {
    NTSTATUS status = 0;
    if (!hash) return STATUS_INVALID_HANDLE;
    if (IsInjected("BCryptHashData", status)) return status;
    auto& digest = *static_cast<Digest*>(hash);
    if (digest.isFinished) return STATUS_INVALID_HANDLE;
    digest.hasBegun =
        digest.hasBegun || EVP_DigestInit_ex2(digest.context.get(), nullptr, nullptr) != 0;
    const bool isTaken = digest.hasBegun && EVP_DigestUpdate(digest.context.get(), input, bytes);
    return isTaken ? 0 : STATUS_INTERNAL_ERROR;
}

NTSTATUS BCryptFinishHash(BCRYPT_HASH_HANDLE hash, PUCHAR output, ULONG bytes, ULONG) noexcept {
    if (!hash) return STATUS_INVALID_HANDLE;
    NTSTATUS injected = 0;
    if (!output || bytes != platform::kBlock) return STATUS_INVALID_PARAMETER;
    if (IsInjected("BCryptFinishHash", injected)) return injected;
    auto& digest = *static_cast<Digest*>(hash);
    // Nothing may have been given: the digest of an empty text.
    if (!digest.hasBegun) {
        if (const NTSTATUS status = BCryptHashData(hash, nullptr, 0, 0)) return status;
    }
    digest.hasBegun = false;
    digest.isFinished = !digest.isReusable;
    unsigned written = 0;
    const bool isDone = EVP_DigestFinal_ex(digest.context.get(), output, &written) != 0;
    return isDone ? 0 : STATUS_INTERNAL_ERROR;
}

NTSTATUS BCryptDestroyHash(BCRYPT_HASH_HANDLE hash) noexcept {
    if (!hash) return STATUS_INVALID_HANDLE;
    delete static_cast<Digest*>(hash);
    return 0;
}
