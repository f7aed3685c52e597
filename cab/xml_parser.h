#pragma once

#include "platform/com_ptr.h"
#include "platform/xml.h"

namespace AUX::CAB {

/// Makes an empty XML document with the system's parser: that of msxml6.dll, or else msxml3.dll. A
/// parser's module is loaded once and freed when this module ends.
/// \return the status of the last attempt, if none can be made.
[[nodiscard]] HRESULT MakeXmlDocument(platform::ComPtr<IXMLDOMDocument2>& document) noexcept;

}  // namespace AUX::CAB
