#pragma once

/// Security descriptors: who may open a named object.

#include "platform/base.h"

#ifndef _WIN32

/// Objects of this system have no descriptors: they are the user's, or the process's own.
struct SECURITY_DESCRIPTOR {
    BYTE Revision;
};
using PSECURITY_DESCRIPTOR = void*;
struct ACL;
inline constexpr DWORD SECURITY_DESCRIPTOR_REVISION = 1;

/// FALSE with ERROR_INVALID_PARAMETER for another revision or null.
BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision) noexcept;
/// \param acl  Null: everybody may do everything.
BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL isPresent, ACL* acl,
                               BOOL isDefault) noexcept;

#endif
