#pragma once

#include <map>

#include "platform/com_object.h"
#include "platform/html_defaults.h"

namespace host {

/// The events of one browser, which any number of sinks may hear. Lives on the tab's thread.
class EventSource final : public platform::ComObject<platform::NotImplemented<IConnectionPoint>> {
public:
    /// \return E_POINTER; CONNECT_E_CANNOTCONNECT for a sink that does not know the events.
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) noexcept override;
    /// \return CONNECT_E_NOCONNECTION for a cookie that is not, or no longer, known.
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) noexcept override;

    /// Tells every sink that the tab has come to the front or gone to the back.
    void FireWindowStateChanged(bool isInFront) noexcept;

private:
    std::map<DWORD, platform::ComPtr<IDispatch>> sinks_;
    DWORD lastCookie_ = 0;
};

}  // namespace host
