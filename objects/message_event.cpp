#include "objects/message_event.h"

namespace AUX {

HRESULT MessageEvent::GetLevel(ULONG* place) noexcept { return Give(place, level); }
HRESULT MessageEvent::GetSource(ULONG* place) noexcept { return Give(place, source); }
HRESULT MessageEvent::GetStatus(ULONG* place) noexcept { return Give(place, status); }
HRESULT MessageEvent::GetValue(ULONG* place) noexcept { return Give(place, value); }
HRESULT MessageEvent::GetValue2(ULONG* place) noexcept { return Give(place, value2); }

HRESULT MessageEvent::GetText(BSTR* place) noexcept {
    return GiveText(place, text.Text(), text.Length());
}

HRESULT MessageEvent::GetObject(IUnknown** place) noexcept {
    return Give(place, place ? platform::ComPtr(object).Detach() : nullptr);
}

HRESULT MessageEvent::GetObject2(IUnknown** place) noexcept {
    return Give(place, place ? platform::ComPtr(object2).Detach() : nullptr);
}

}  // namespace AUX
