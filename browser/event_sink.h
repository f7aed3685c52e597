#pragma once

#include "automation/type_info_holder.h"
#include "platform/band.h"

class QVDIEaddinBHO;

/// The side of an object that hears the browser's events. A part of its owner, with which it shares
/// the count of references, but an object of its own to the browser.
class EventSink final : public IDispatch {
public:
    explicit EventSink(QVDIEaddinBHO& owner) noexcept;
    EventSink(const EventSink&) = delete;
    EventSink& operator=(const EventSink&) = delete;

    /// Answers IUnknown, IDispatch and the id of the events.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID language,
                                          ITypeInfo** info) noexcept override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                            LCID language, DISPID* ids) noexcept override;
    /// Hears that the window's state has changed; every other event is passed over. Always S_OK.
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID language, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override;

private:
    QVDIEaddinBHO& owner_;
    AUX::TypeInfoHolder types_;
};
