#pragma once

#include "platform/crypto.h"

/// The system's algorithms, opened at their first use and then shared by all ciphers: to open one
/// costs far more than a short text's whole work. Any thread may call these.
namespace AUX {

/// AES in CBC mode. \return null if the system has none.
[[nodiscard]] BCRYPT_ALG_HANDLE AesCbc() noexcept;
/// \return null if the system has none.
[[nodiscard]] BCRYPT_ALG_HANDLE Md5() noexcept;

/// Gives them back, for the module's end; a later use opens them anew. No cipher may be at work.
void CloseCipherAlgorithms() noexcept;

}  // namespace AUX
