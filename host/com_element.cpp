#include "host/com_element.h"

namespace host {

HRESULT STDMETHODCALLTYPE Element::get_scrollHeight(LONG* height) noexcept {
    if (!height) return E_POINTER;
    *height = scrollHeight_;
    return S_OK;
}

}  // namespace host
