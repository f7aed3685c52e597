#include "host/com_call.h"

namespace host {

HRESULT GiveText(const platform::WideString& text, BSTR* result) noexcept {
    if (!result) return E_POINTER;
    *result = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return *result ? S_OK : E_OUTOFMEMORY;
}

}  // namespace host
