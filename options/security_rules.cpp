#include "options/security_rules.h"

const WCHAR* FindSecurityFault(const SecurityChoices& choices) noexcept {
    if (!choices.isEnabled) return nullptr;
    if (!choices.hasUserPassword && !choices.hasOwnerPassword) {
        return TEXT("Either a Document Open Password or Permissions Password should be specified.");
    }
    if ((choices.hasUserPassword && choices.userPassword.empty()) ||
        (choices.hasOwnerPassword && choices.ownerPassword.empty())) {
        return TEXT("Please either deselect 'Password Required' option or enter the password.");
    }
    if (choices.hasUserPassword && choices.hasOwnerPassword &&
        choices.userPassword == choices.ownerPassword) {
        return TEXT(
            "The passwords to document open and permissions cannot be the same. Please enter "
            "different password in one of passwords fields.");
    }
    return nullptr;
}
