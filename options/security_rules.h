#pragma once

#include "foundation/wstring_view.h"

/// What the page of passwords and permissions shows that its check looks at.
struct SecurityChoices {
    bool isEnabled = false;         ///< "Use PDF security"
    bool hasUserPassword = false;   ///< The password to open the document is asked for.
    bool hasOwnerPassword = false;  ///< The password to change the permissions is asked for.
    AUX::WStringView userPassword;
    AUX::WStringView ownerPassword;
};

/// Looks at the choices in the order in which a user is told. Passwords are compared exactly; one
/// that is not asked for is not looked at.
/// \return null if they may be stored, else what is to be said.
[[nodiscard]] const WCHAR* FindSecurityFault(const SecurityChoices& choices) noexcept;
