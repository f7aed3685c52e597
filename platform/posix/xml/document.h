#pragma once

#include "platform/com.h"

namespace platform {

/// DllGetClassObject of the module that makes XML documents.
HRESULT GetXmlClass(REFCLSID classId, REFIID id, void** object) noexcept;

}  // namespace platform
