#pragma once

#include <cstdint>

#include "foundation/wstring.h"
#include "settings/shared_record.h"

/// How the finished document is protected. The passwords are wiped when the record ends.
/// A ConversionSettings sets the defaults; they stand in its table of rows.
struct SecuritySettings final : SharedRecord {
    bool Enabled = false;
    bool HasUserPassword = false;   ///< Needed to open the document.
    bool HasOwnerPassword = false;  ///< Needed to change the permissions.
    AUX::WString UserPassword;
    AUX::WString OwnerPassword;
    /// Encryption level: 40-bit RC4, 128-bit RC4, 128-bit AES, 256-bit AES in its older form (of
    /// Acrobat 9) and in its newer one (of Acrobat X).
    std::uint32_t Type = 0;
    // Permissions of level 0.
    bool Allow40Printing = false;
    bool Allow40Changing = false;
    bool Allow40Copying = false;
    bool Allow40Comments = false;
    // Permissions of the levels above it.
    bool Allow128ContentAccess = false;
    bool Allow128Copying = false;
    std::uint32_t Changes128 = 0;   ///< From 0, none, to 4, general editing.
    std::uint32_t Printing128 = 0;  ///< Not allowed, low resolution, fully allowed.
    bool EncryptMetadata128 = false;

    ~SecuritySettings() override;
};
