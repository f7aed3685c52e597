#pragma once

/// The calls of Windows' library for ciphers and digests: AES in CBC mode, and MD5.
///
/// Results are codes of their own: 0 is success, a negative value failure. A handle serves one
/// thread at a time, that of an algorithm any number. Property names and identifiers are compared
/// in full. A handle that is none gives STATUS_INVALID_HANDLE if it is null; others are not known.

#include "platform/base.h"

using NTSTATUS = std::int32_t;
using PUCHAR = unsigned char*;
using BCRYPT_HANDLE = void*;
using BCRYPT_ALG_HANDLE = void*;
using BCRYPT_KEY_HANDLE = void*;
using BCRYPT_HASH_HANDLE = void*;

inline constexpr NTSTATUS STATUS_INVALID_HANDLE = static_cast<NTSTATUS>(0xC0000008);
inline constexpr NTSTATUS STATUS_INVALID_PARAMETER = static_cast<NTSTATUS>(0xC000000D);
inline constexpr NTSTATUS STATUS_NO_MEMORY = static_cast<NTSTATUS>(0xC0000017);
inline constexpr NTSTATUS STATUS_BUFFER_TOO_SMALL = static_cast<NTSTATUS>(0xC0000023);
inline constexpr NTSTATUS STATUS_NOT_SUPPORTED = static_cast<NTSTATUS>(0xC00000BB);
inline constexpr NTSTATUS STATUS_INVALID_BUFFER_SIZE = static_cast<NTSTATUS>(0xC0000206);
inline constexpr NTSTATUS STATUS_NOT_FOUND = static_cast<NTSTATUS>(0xC0000225);
inline constexpr NTSTATUS STATUS_INTERNAL_ERROR = static_cast<NTSTATUS>(0xC00000E5);

inline constexpr const WCHAR* BCRYPT_AES_ALGORITHM = TEXT("AES");
inline constexpr const WCHAR* BCRYPT_MD5_ALGORITHM = TEXT("MD5");
inline constexpr const WCHAR* BCRYPT_CHAINING_MODE = TEXT("ChainingMode");
inline constexpr const WCHAR* BCRYPT_CHAIN_MODE_CBC = TEXT("ChainingModeCBC");
inline constexpr ULONG BCRYPT_HASH_REUSABLE_FLAG = 0x20;

constexpr bool BCRYPT_SUCCESS(NTSTATUS status) { return status >= 0; }

/// Opens AES or MD5; `implementation` is null, `flags` 0. STATUS_NOT_FOUND for others.
NTSTATUS BCryptOpenAlgorithmProvider(BCRYPT_ALG_HANDLE* algorithm, LPCWSTR id,
                                     LPCWSTR implementation, ULONG flags) noexcept;
NTSTATUS BCryptCloseAlgorithmProvider(BCRYPT_ALG_HANDLE algorithm, ULONG flags) noexcept;

/// Takes the chaining mode CBC of a cipher, which is the one that there is.
NTSTATUS BCryptSetProperty(BCRYPT_HANDLE object, LPCWSTR property, PUCHAR value, ULONG bytes,
                           ULONG flags) noexcept;

/// Makes a key of 16, 24 or 32 bytes; `object` is null, the memory is the call's own.
NTSTATUS BCryptGenerateSymmetricKey(BCRYPT_ALG_HANDLE algorithm, BCRYPT_KEY_HANDLE* key,
                                    PUCHAR object, ULONG objectBytes, PUCHAR secret,
                                    ULONG secretBytes, ULONG flags) noexcept;
NTSTATUS BCryptDestroyKey(BCRYPT_KEY_HANDLE key) noexcept;

/// Enciphers whole blocks of 16 bytes, which may lie where the output goes. `iv` holds 16 bytes and
/// becomes what the chain goes on with. Without an output only the size is given.
/// STATUS_INVALID_BUFFER_SIZE if the length is no multiple of 16, STATUS_BUFFER_TOO_SMALL.
NTSTATUS BCryptEncrypt(BCRYPT_KEY_HANDLE key, PUCHAR input, ULONG inputBytes, void* padding,
                       PUCHAR iv, ULONG ivBytes, PUCHAR output, ULONG outputBytes, ULONG* result,
                       ULONG flags) noexcept;
NTSTATUS BCryptDecrypt(BCRYPT_KEY_HANDLE key, PUCHAR input, ULONG inputBytes, void* padding,
                       PUCHAR iv, ULONG ivBytes, PUCHAR output, ULONG outputBytes, ULONG* result,
                       ULONG flags) noexcept;

/// Begins a digest; `object` and `secret` are null. With BCRYPT_HASH_REUSABLE_FLAG it begins anew
/// after each BCryptFinishHash; without it, it is then of no more use.
NTSTATUS BCryptCreateHash(BCRYPT_ALG_HANDLE algorithm, BCRYPT_HASH_HANDLE* hash, PUCHAR object,
                          ULONG objectBytes, PUCHAR secret, ULONG secretBytes,
                          ULONG flags) noexcept;
NTSTATUS BCryptHashData(BCRYPT_HASH_HANDLE hash, PUCHAR input, ULONG bytes, ULONG flags) noexcept;
/// \param bytes  16, the size of the digest.
NTSTATUS BCryptFinishHash(BCRYPT_HASH_HANDLE hash, PUCHAR output, ULONG bytes,
                          ULONG flags) noexcept;
NTSTATUS BCryptDestroyHash(BCRYPT_HASH_HANDLE hash) noexcept;
