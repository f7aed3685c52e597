#include "foundation/text_cipher.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "foundation/cipher_algorithms.h"
#include "platform/memory.h"
#include "platform/processor.h"

namespace AUX {
namespace {

constexpr std::uint32_t kBlock = 16;
constexpr std::uint32_t kHead = 2 * kBlock;  // The initial vector and the hash.

template <class T>
class Wiped {
public:
    ~Wiped() { SecureZeroMemory(&value, sizeof value); }
    T value = {};
};

// Bytes that are wiped as far as they were used.
constexpr std::uint32_t kShort = 256;
struct Scratch {
    explicit Scratch(std::uint32_t count) noexcept : used(count) { std::memset(bytes, 0, used); }
    ~Scratch() { SecureZeroMemory(bytes, used); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    std::uint32_t used;
    std::uint8_t bytes[2 * kBlock + kShort];
};

// The system takes pointers to what it only reads without const.
PUCHAR Input(const void* bytes) noexcept {
    return const_cast<PUCHAR>(static_cast<const unsigned char*>(bytes));
}

// A number that no other call in this module gets: the counter, which two processors may read at
// the same moment, moved on where it must be.
std::uint64_t NextStamp() noexcept {
    static constinit std::atomic<std::uint64_t> last{0};
    std::uint64_t before = last.load(std::memory_order_relaxed);
    std::uint64_t stamp = 0;
    do {
        stamp = std::max(platform::TimeStamp(), before + 1);
    } while (!last.compare_exchange_weak(before, stamp, std::memory_order_relaxed));
    return stamp;
}

// Looks at all bytes, whether they differ or not: the time tells nothing.
bool AreSame(const std::uint8_t* a, const std::uint8_t* b) noexcept {
    unsigned difference = 0;
    for (std::uint32_t i = 0; i < kBlock; ++i) difference |= static_cast<unsigned>(a[i] ^ b[i]);
    return difference == 0;
}

// Whether the block ends in as many bytes of its last one's value; likewise.
bool IsPadded(const std::uint8_t* block) noexcept {
    const unsigned pad = block[kBlock - 1];
    unsigned wrong = static_cast<unsigned>(pad == 0) | static_cast<unsigned>(pad > kBlock);
    for (unsigned i = 0; i < kBlock; ++i) {
        const bool isPadding = i + pad >= kBlock;
        wrong |= static_cast<unsigned>(isPadding) & static_cast<unsigned>(block[i] != pad);
    }
    return wrong == 0;
}

Status FailureOf(NTSTATUS status) noexcept {
    return static_cast<std::uint32_t>(status) == 0xC0000017 ? E_OUTOFMEMORY : E_FAIL;
}

}  // namespace

TextCipher::~TextCipher() { SecureZeroMemory(key, sizeof key); }

void TextCipher::SetKey(const void* bytes, std::uint32_t length) noexcept {
    const std::uint32_t taken = std::min<std::uint32_t>(length, sizeof key);
    aesEncrypt_.Reset();
    aesDecrypt_.Reset();
    SecureZeroMemory(key, sizeof key);
    keyLength = bytes ? std::max(taken / 8, 2u) * 8 : 0;
    if (bytes) std::memcpy(key, bytes, taken);
}

Status TextCipher::Prepare(platform::CipherKey& aes) noexcept {
    if (keyLength == 0) return E_INVALIDARG;
    if (aes) return kStatusOk;
    const NTSTATUS status =
        BCryptGenerateSymmetricKey(AesCbc(), aes.Put(), nullptr, 0, key, keyLength, 0);
    return BCRYPT_SUCCESS(status) ? kStatusOk : FailureOf(status);
}

Status TextCipher::PrepareDigest() noexcept {
    if (digest_) return kStatusOk;
    NTSTATUS status = BCryptCreateHash(Md5(), digest_.Put(), nullptr, 0, nullptr, 0,
                                       isDigestReusable_ ? BCRYPT_HASH_REUSABLE_FLAG : 0);
    if (!BCRYPT_SUCCESS(status) && isDigestReusable_) {
        isDigestReusable_ = false;
        status = BCryptCreateHash(Md5(), digest_.Put(), nullptr, 0, nullptr, 0, 0);
    }
    return BCRYPT_SUCCESS(status) ? kStatusOk : FailureOf(status);
}

bool TextCipher::AddToDigest(const void* bytes, std::uint32_t length) noexcept {
    if (PrepareDigest()) return false;  // One that cannot be used again is made again.
    if (BCRYPT_SUCCESS(BCryptHashData(digest_.Get(), Input(bytes), length, 0))) return true;
    digest_.Reset();
    return false;
}

bool TextCipher::FinishDigest(std::uint8_t* digest) noexcept {
    const bool isDone = BCRYPT_SUCCESS(BCryptFinishHash(digest_.Get(), digest, kBlock, 0));
    if (!isDone || !isDigestReusable_) digest_.Reset();
    return isDone;
}

bool TextCipher::MakeVector(const std::uint8_t* hash, std::uint8_t* vector) noexcept {
    std::uint8_t source[8 + kBlock];
    const std::uint64_t stamp = NextStamp();
    std::memcpy(source, &stamp, sizeof stamp);
    std::memcpy(source + sizeof stamp, hash, kBlock);
    return AddToDigest(source, sizeof source) && FinishDigest(vector);
}

Status TextCipher::Encrypt(const void* plain, std::uint32_t length, void* output,
                           std::uint32_t& inOutSize) noexcept {
    if (!plain || length > INT32_MAX - kHead - kBlock) return E_INVALIDARG;
    const std::uint32_t pad = kBlock - length % kBlock;
    const std::uint32_t size = kHead + length + pad;
    if (!output) {
        inOutSize = size;
        return kStatusOk;
    }
    if (inOutSize < size) return E_INVALIDARG;
    if (const Status status = Prepare(aesEncrypt_)) return status;
    if (const Status status = PrepareDigest()) return status;

    Wiped<std::uint8_t[kBlock]> hash;
    std::uint8_t vector[kBlock];
    if (!AddToDigest(plain, length) || !FinishDigest(hash.value) ||
        !MakeVector(hash.value, vector)) {
        return E_FAIL;
    }
    // Put together first: then one call enciphers all of it.
    auto* const envelope = static_cast<std::uint8_t*>(output);
    std::uint8_t* const body = envelope + kBlock;
    std::memmove(envelope + kHead, plain, length);
    std::memset(envelope + kHead + length, static_cast<int>(pad), pad);
    std::memcpy(envelope, vector, kBlock);
    std::memcpy(body, hash.value, kBlock);
    ULONG moved = 0;
    const NTSTATUS status = BCryptEncrypt(aesEncrypt_.Get(), body, size - kBlock, nullptr, vector,
                                          kBlock, body, size - kBlock, &moved, 0);
    if (!BCRYPT_SUCCESS(status)) {
        SecureZeroMemory(envelope, size);
        return FailureOf(status);
    }
    inOutSize = size;
    return kStatusOk;
}

// The vector becomes the last block of the input, which the chain goes on with.
bool TextCipher::DecryptBlocks(const std::uint8_t* input, std::uint32_t length,
                               std::uint8_t* vector, std::uint8_t* output) noexcept {
    if (length == 0) return true;
    std::uint8_t used[kBlock];
    std::memcpy(used, vector, kBlock);
    std::memcpy(vector, input + length - kBlock, kBlock);
    ULONG moved = 0;
    return BCRYPT_SUCCESS(BCryptDecrypt(aesDecrypt_.Get(), Input(input), length, nullptr, used,
                                        kBlock, output, length, &moved, 0));
}

// Deciphers the blocks in front of the last one, and digests them; without an output piece by
// piece.
bool TextCipher::DecryptBody(const std::uint8_t* input, std::uint32_t length, std::uint8_t* vector,
                             std::uint8_t* output) noexcept {
    if (output) return DecryptBlocks(input, length, vector, output) && AddToDigest(output, length);
    Wiped<std::uint8_t[1024]> piece;
    for (std::uint32_t done = 0; done < length;) {
        const std::uint32_t part = std::min<std::uint32_t>(length - done, sizeof piece.value);
        if (!DecryptBlocks(input + done, part, vector, piece.value) ||
            !AddToDigest(piece.value, part)) {
            return false;
        }
        done += part;
    }
    return true;
}

Status TextCipher::Decrypt(const void* envelope, std::uint32_t length, void* output,
                           std::uint32_t& inOutSize) noexcept {
    const std::uint32_t blocks = length / kBlock;
    if (!envelope || length > INT32_MAX || blocks * kBlock <= kHead || Prepare(aesDecrypt_)) {
        return E_INVALIDARG;
    }
    const auto* const input = static_cast<const std::uint8_t*>(envelope);
    auto* const text = static_cast<std::uint8_t*>(output);
    const std::uint32_t whole = blocks * kBlock - kHead - kBlock;  // In front of the last block.
    if (text && inOutSize < whole) return E_INVALIDARG;

    std::uint8_t vector[kBlock];
    std::memcpy(vector, input, kBlock);
    // The stored hash and the last block. A short text lies between them: its copy costs less than
    // a call of its own. The hash has one in each case: some systems take a call whose vector is
    // that of the call before for one that goes on, so that no envelope may be opened with one
    // call.
    const bool isShort = whole <= kShort;
    Scratch scratch(2 * kBlock + (isShort ? whole : 0));
    std::uint8_t* const stored = scratch.bytes;
    std::uint8_t* const last = scratch.bytes + scratch.used - kBlock;
    bool isGood = DecryptBlocks(input + kBlock, kBlock, vector, stored);
    if (isShort) {
        isGood = isGood && DecryptBlocks(input + kHead, whole + kBlock, vector, stored + kBlock);
    } else {
        isGood = isGood && DecryptBody(input + kHead, whole, vector, text) &&
                 DecryptBlocks(input + kHead + whole, kBlock, vector, last);
    }
    // A wrong padding does not keep the hash from being made: both take the same time.
    const std::uint32_t kept = kBlock - std::min<std::uint32_t>(last[kBlock - 1], kBlock);
    const std::uint32_t inScratch = scratch.used - 2 * kBlock + kept;
    const std::uint32_t size = whole + kept;
    Wiped<std::uint8_t[kBlock]> hash;
    isGood = isGood && AddToDigest(stored + kBlock, inScratch) && FinishDigest(hash.value);
    if (!isGood) digest_.Reset();  // It may hold a part of the text.
    const bool isSame = AreSame(hash.value, stored);
    isGood = (IsPadded(last) & isSame & isGood) != 0;
    if (!isGood || size == 0 || (text && inOutSize < size)) {
        if (text) SecureZeroMemory(text, whole);
        return E_INVALIDARG;
    }
    if (text) std::memcpy(text + size - inScratch, stored + kBlock, inScratch);
    inOutSize = size;
    return kStatusOk;
}

namespace {

Status CopyText(WStringView text, WCHAR* output, std::uint32_t& inOutCount) noexcept {
    const auto count = static_cast<std::uint32_t>(text.size());
    const bool isTooSmall = output && inOutCount < count;
    inOutCount = count;
    if (isTooSmall) return kStatusInsufficientBuffer;
    if (output && count) std::memmove(output, text.data(), count * sizeof(WCHAR));
    return kStatusOk;
}

// A text that opens, but has no room, is told from one that does not.
Status OpenText(TextCipher& cipher, WStringView envelope, WCHAR* output,
                std::uint32_t& inOutCount) noexcept {
    const auto bytes = static_cast<std::uint32_t>(envelope.size() * sizeof(WCHAR));
    const std::uint32_t room = std::min<std::uint32_t>(inOutCount, INT32_MAX / 2) * 2;
    std::uint32_t size = room;
    bool isDone = cipher.Decrypt(envelope.data(), bytes, output, size) == kStatusOk;
    const bool opens = isDone || cipher.Decrypt(envelope.data(), bytes, nullptr, size) == kStatusOk;
    if (!opens) return kStatusDecryptFailure;
    if (size % sizeof(WCHAR)) {  // Half a unit: it never was a text.
        if (isDone && output) SecureZeroMemory(output, size);
        return kStatusDecryptFailure;
    }
    inOutCount = size / std::uint32_t{sizeof(WCHAR)};
    return isDone ? kStatusOk : kStatusInsufficientBuffer;
}

bool IsTooLong(WStringView text) noexcept { return text.size() > INT32_MAX / sizeof(WCHAR); }

}  // namespace

Status EncryptText(TextCipher* cipher, WStringView text, WCHAR* output,
                   std::uint32_t& inOutCount) noexcept {
    if (IsTooLong(text)) return E_INVALIDARG;
    if (!cipher) return CopyText(text, output, inOutCount);
    const void* const plain = text.empty() ? TEXT("") : text.data();
    const auto bytes = static_cast<std::uint32_t>(text.size() * sizeof(WCHAR));
    std::uint32_t size = 0;
    if (const Status status = cipher->Encrypt(plain, bytes, nullptr, size)) return status;
    const std::uint32_t count = 1 + size / std::uint32_t{sizeof(WCHAR)};
    if (output && inOutCount < count) {
        inOutCount = count;
        return kStatusInsufficientBuffer;
    }
    if (output) {
        // The text may lie where the output goes; the mark follows once it has been read.
        if (const Status status = cipher->Encrypt(plain, bytes, output + 1, size)) return status;
        output[0] = 0;
    }
    inOutCount = count;
    return kStatusOk;
}

Status DecryptText(TextCipher* cipher, WStringView text, WCHAR* output,
                   std::uint32_t& inOutCount) noexcept {
    if (IsTooLong(text)) return E_INVALIDARG;
    if (!cipher) return CopyText(text, output, inOutCount);
    if (!text.empty() && text.front() == 0) {
        const Status status = OpenText(*cipher, text.substr(1), output, inOutCount);
        if (status != kStatusDecryptFailure) return status;
    }
    // An envelope's first unit may be a U+0000 too.
    return OpenText(*cipher, text, output, inOutCount);
}

}  // namespace AUX
