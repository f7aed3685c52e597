#include "converter/pdf_protection.h"

#include <qpdf/QUtil.hh>
#include <sys/random.h>

namespace converter {
namespace {

constexpr std::size_t kRandomBytes = 24;

struct Level {
    int revision;
    int leastMinor;
    int extensionLevel;
    bool utf8;  // passwords; else one byte a character
};
constexpr Level kLevels[] = {
    {2, 3, 0, false}, {3, 4, 0, false}, {4, 6, 0, false}, {5, 7, 3, true}, {6, 7, 8, true}};

Result<std::string> RandomPassword() {
    static constexpr char kDigits[] = "0123456789abcdef";
    unsigned char bytes[kRandomBytes];
    if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) {
        return Error{"The system gives no random numbers for the owner password."};
    }
    std::string text;
    for (const unsigned char byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

Result<std::string> PasswordBytes(const platform::WideString& password, bool utf8) {
    // The library ends a password there, and the file would open with the shorter one.
    if (password.find(WCHAR{0}) != platform::WideString::npos) {
        return Error{"A password holds a zero character, which nobody can type."};
    }
    const std::string text = platform::ToUtf8(password);
    if (utf8) return text;
    std::string bytes;
    if (QUtil::utf8_to_pdf_doc(text, bytes)) return bytes;
    return Error{"A password holds characters that only the 256-bit encryption levels can carry."};
}

Permissions PermissionsOf(const Security& security) {
    Permissions allowed;
    if (security.hasUserPassword && !security.hasOwnerPassword) return allowed;
    if (security.type == Encryption::Rc4Bits40) {
        allowed.print = security.allow40Printing ? Printing::Full : Printing::None;
        allowed.modify = security.allow40Changing;
        allowed.extract = security.allow40Copying;
        allowed.annotate = security.allow40Comments;
        return allowed;
    }
    const Changes changes = security.changes128;
    // From the 128-bit AES level on, reading aloud can't be forbidden any more (ISO
    // 32000-2, 7.6.4).
    allowed.accessibility =
        security.allow128ContentAccess || security.type >= Encryption::AesBits128;
    allowed.extract = security.allow128Copying;
    allowed.print = security.printing128;
    allowed.modify = changes == Changes::General;
    allowed.assemble = changes == Changes::General || changes == Changes::Assembly;
    allowed.annotate = changes == Changes::General || changes == Changes::Comments;
    allowed.form = allowed.annotate || changes == Changes::Forms;
    return allowed;
}

}  // namespace

Result<Protection> DecideProtection(const Security& security) {
    if (security.hasUserPassword && security.userPassword.empty()) {
        return Error{"A password to open the document is asked for, but it is empty."};
    }
    const Level& level = kLevels[static_cast<std::size_t>(security.type)];
    Protection protection;
    protection.type = security.type;
    protection.revision = level.revision;
    protection.leastMinor = level.leastMinor;
    protection.extensionLevel = level.extensionLevel;
    protection.permissions = PermissionsOf(security);
    // Below the 128-bit AES level the metadata can't be left out.
    protection.encryptMetadata =
        security.encryptMetadata128 || security.type <= Encryption::Rc4Bits128;
    if (security.hasUserPassword) {
        Result<std::string> user = PasswordBytes(security.userPassword, level.utf8);
        if (!user) return user.GetError();
        protection.userPassword = std::move(*user);
    }
    const bool named = security.hasOwnerPassword && !security.ownerPassword.empty();
    Result<std::string> owner =
        named ? PasswordBytes(security.ownerPassword, level.utf8) : RandomPassword();
    if (!owner) return owner.GetError();
    protection.ownerPassword = std::move(*owner);
    return protection;
}

}  // namespace converter
