#include "host/event_source.h"

#include <vector>

#include "host/com_call.h"
#include "platform/typeinfo.h"

namespace host {
namespace {

// Of the event's two numbers, the state and which of its bits count.
constexpr LONG kIsVisibleToUser = 1;
constexpr LONG kIsEnabled = 2;

VARIANT Number(LONG value) noexcept {
    VARIANT number = {};
    number.vt = VT_I4;
    number.lVal = value;
    return number;
}

}  // namespace

HRESULT STDMETHODCALLTYPE EventSource::Advise(IUnknown* sink, DWORD* cookie) noexcept {
    if (!cookie) return E_POINTER;
    *cookie = 0;
    if (!sink) return E_POINTER;
    void* found = nullptr;
    if (FAILED(sink->QueryInterface(platform::kBrowserEvents, &found))) {
        return CONNECT_E_CANNOTCONNECT;
    }
    platform::ComPtr<IDispatch> events;
    events.Attach(static_cast<IDispatch*>(found));
    return ComCall([&] {
        sinks_.emplace(lastCookie_ + 1, std::move(events));
        *cookie = ++lastCookie_;
        return S_OK;
    });
}

HRESULT STDMETHODCALLTYPE EventSource::Unadvise(DWORD cookie) noexcept {
    return sinks_.erase(cookie) ? S_OK : CONNECT_E_NOCONNECTION;
}

void EventSource::FireWindowStateChanged(bool isInFront) noexcept {
    (void)ComCall([&] {
        // A sink may leave while it hears.
        std::vector<platform::ComPtr<IDispatch>> sinks;
        for (const auto& [cookie, sink] : sinks_) sinks.push_back(sink);
        // Last parameter first.
        VARIANT values[] = {Number(kIsVisibleToUser | kIsEnabled),
                            Number(isInFront ? kIsVisibleToUser | kIsEnabled : 0)};
        DISPPARAMS parameters = {values, nullptr, 2, 0};
        for (const platform::ComPtr<IDispatch>& sink : sinks) {
            (void)sink->Invoke(DISPID_WINDOWSTATECHANGED, IID{}, 0, DISPATCH_METHOD, &parameters,
                               nullptr, nullptr, nullptr);
        }
        return S_OK;
    });
}

}  // namespace host
