#pragma once

#include "foundation/wstring.h"
#include "objects/frame.h"

namespace AUX {

/// One message, as the sinks of a hub see it. The hub owns the records and uses them again: a sink
/// that keeps one beyond OnMessage may find a later message in it, and reads it at its own risk.
class MessageEvent final : public DualObject<IMessageEvent> {
public:
    HRESULT STDMETHODCALLTYPE GetLevel(ULONG* level) noexcept override;
    HRESULT STDMETHODCALLTYPE GetSource(ULONG* source) noexcept override;
    HRESULT STDMETHODCALLTYPE GetStatus(ULONG* status) noexcept override;
    HRESULT STDMETHODCALLTYPE GetValue(ULONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetValue2(ULONG* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetText(BSTR* text) noexcept override;
    /// With a reference; S_OK with null where the message has none.
    HRESULT STDMETHODCALLTYPE GetObject(IUnknown** object) noexcept override;
    HRESULT STDMETHODCALLTYPE GetObject2(IUnknown** object) noexcept override;

private:
    friend class MessageHub;

    ULONG level = 0;
    ULONG source = 0;
    ULONG status = 0;
    ULONG value = 0;
    ULONG value2 = 0;
    WString text;  // its block serves the next message too
    platform::ComPtr<IUnknown> object;
    platform::ComPtr<IUnknown> object2;
    bool busy = false;  // under the hub's lock
};

}  // namespace AUX
