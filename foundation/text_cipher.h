#pragma once

#include <cstdint>

#include "foundation/status.h"
#include "foundation/wstring_view.h"
#include "platform/crypto.h"

namespace AUX {

/// Protects short secret texts: AES (FIPS 197) in CBC mode, in an envelope that differs each time
/// and lets a wrong key or a damaged text be noticed.
///
/// The envelope of a text of n bytes has ((n + 16) & ~15) + 32 bytes: the initial vector, the
/// enciphered MD5 (RFC 1321) of the text, the enciphered text with the padding of PKCS #7. Lengths
/// and sizes are bytes. Owns the key and wipes it at its end. One object serves one call at a time.
class TextCipher {
public:
    TextCipher() noexcept = default;
    ~TextCipher();
    TextCipher(const TextCipher&) = delete;
    TextCipher& operator=(const TextCipher&) = delete;

    /// Takes a key of at most 32 bytes; it counts as 16, 24 or 32 bytes, rounded down but to 16 at
    /// least, with zeros behind its end. Without bytes (null) there is no key afterwards.
    void SetKey(const void* bytes, std::uint32_t length) noexcept;

    /// Bytes; 0 without a key.
    [[nodiscard]] std::uint32_t KeyLength() const noexcept { return keyLength; }

    /// Makes an envelope.
    /// \param output     Null: only the size is told. It may be where the text lies.
    /// \param inOutSize  The room, then the envelope's size; unchanged by a failure.
    /// \return E_INVALIDARG without a text or a key, if the room is too small, or for a text near
    ///         2 GiB; E_FAIL or E_OUTOFMEMORY if the system's cryptography fails.
    [[nodiscard]] Status Encrypt(const void* plain, std::uint32_t length, void* output,
                                 std::uint32_t& inOutSize) noexcept;

    /// Opens an envelope. An empty text's one cannot be opened.
    /// \param output     Null: only the size is told, of an envelope that would open. Must not
    ///                   overlap the envelope.
    /// \param inOutSize  The room, then the text's size; unchanged by a failure.
    /// \return E_INVALIDARG whatever fails; a wrong key, a wrong padding and a wrong hash cannot be
    ///         told apart. What was written to the output is wiped then.
    [[nodiscard]] Status Decrypt(const void* envelope, std::uint32_t length, void* output,
                                 std::uint32_t& inOutSize) noexcept;

private:
    [[nodiscard]] Status Prepare(platform::CipherKey& aes) noexcept;
    [[nodiscard]] Status PrepareDigest() noexcept;
    [[nodiscard]] bool AddToDigest(const void* bytes, std::uint32_t length) noexcept;
    [[nodiscard]] bool FinishDigest(std::uint8_t* digest) noexcept;
    [[nodiscard]] bool MakeVector(const std::uint8_t* hash, std::uint8_t* vector) noexcept;
    [[nodiscard]] bool DecryptBlocks(const std::uint8_t* input, std::uint32_t length,
                                     std::uint8_t* vector, std::uint8_t* output) noexcept;
    [[nodiscard]] bool DecryptBody(const std::uint8_t* input, std::uint32_t length,
                                   std::uint8_t* vector, std::uint8_t* output) noexcept;

    std::uint32_t keyLength = 0;
    std::uint8_t key[32] = {};
    // Made from the key at the first use. One for each direction: a chain may begin where the last
    // one of the other direction began.
    platform::CipherKey aesEncrypt_;
    platform::CipherKey aesDecrypt_;
    platform::DigestHandle digest_;
    bool isDigestReusable_ = true;  // Windows 7 makes each anew.
};

/// The cipher cannot open the text: a wrong key, or no text of a cipher (SEC_E_DECRYPT_FAILURE).
inline constexpr Status kStatusDecryptFailure = static_cast<Status>(0x80090330);
/// ERROR_INSUFFICIENT_BUFFER.
inline constexpr Status kStatusInsufficientBuffer = static_cast<Status>(0x8007007A);

/// Enciphers a text of UTF-16 units: a U+0000, then the envelope of the text's bytes, taken as
/// units.
/// \param cipher      Null: the text is copied.
/// \param output      Null: only the count is told.
/// \param inOutCount  The room in units, then the units of the result. If the room is too small the
///                    units that are needed, and unchanged by other failures.
/// \return kStatusInsufficientBuffer; as TextCipher::Encrypt.
[[nodiscard]] Status EncryptText(TextCipher* cipher, WStringView text, WCHAR* output,
                                 std::uint32_t& inOutCount) noexcept;

/// Takes back EncryptText, with the same parameters. A text without the U+0000 in front is an
/// envelope as well.
/// \return kStatusDecryptFailure, with nothing left in the output; kStatusInsufficientBuffer.
[[nodiscard]] Status DecryptText(TextCipher* cipher, WStringView text, WCHAR* output,
                                 std::uint32_t& inOutCount) noexcept;

}  // namespace AUX
