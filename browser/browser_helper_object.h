#pragma once

#include "automation/type_info_holder.h"
#include "browser/band_window.h"
#include "browser/event_sink.h"
#include "browser/server_state.h"
#include "platform/band.h"
#include "platform/html_defaults.h"
#include "resources/generated/addin.h"

/// What a browser makes of the add-in, twice for each tab. Its site decides which of the two it is:
/// the browser itself, which it tells to show or hide the toolbar; or the bar that bands lie in,
/// where it is the toolbar and hears when the tab comes to the front. Belongs to the tab's thread,
/// so the count of its references is a plain number. Keeps the module loaded.
class QVDIEaddinBHO final : public IQVDIEaddinBHO,
                            public IObjectWithSite,
                            public IDeskBand,
                            public IInputObject,
                            public platform::NotImplemented<IDocHostUIHandler> {
public:
    QVDIEaddinBHO() noexcept;
    QVDIEaddinBHO(const QVDIEaddinBHO&) = delete;
    QVDIEaddinBHO& operator=(const QVDIEaddinBHO&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID language,
                                          ITypeInfo** info) noexcept override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                            LCID language, DISPID* ids) noexcept override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID language, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override;

    /// Takes its part. Null gives the events up, but keeps the site and the browser. A query that
    /// fails leaves out what depends on it, and is no failure.
    /// \return E_NOTIMPL in Explorer, with nothing done; E_FAIL for a bar while the events of the
    ///         last one are still connected; else S_OK.
    HRESULT STDMETHODCALLTYPE SetSite(IUnknown* site) noexcept override;
    /// Answers from the bar's input site; E_FAIL without one.
    HRESULT STDMETHODCALLTYPE GetSite(REFIID id, void** site) noexcept override;

    /// E_INVALIDARG without a place for the window.
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) noexcept override;
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL enters) noexcept override;
    /// Notes for all tabs whether the user wants the toolbar. The browser shows and hides it.
    HRESULT STDMETHODCALLTYPE ShowDW(BOOL shows) noexcept override;
    HRESULT STDMETHODCALLTYPE CloseDW(DWORD reserved) noexcept override;
    HRESULT STDMETHODCALLTYPE ResizeBorderDW(const RECT* border, IUnknown* site,
                                             BOOL reserved) noexcept override;
    /// Sizes are in pixels. Nothing to fill is no failure.
    HRESULT STDMETHODCALLTYPE GetBandInfo(DWORD band, DWORD viewMode,
                                          DESKBANDINFO* info) noexcept override;

    HRESULT STDMETHODCALLTYPE UIActivateIO(BOOL activates, MSG* message) noexcept override;
    HRESULT STDMETHODCALLTYPE HasFocusIO() noexcept override;
    HRESULT STDMETHODCALLTYPE TranslateAcceleratorIO(MSG* message) noexcept override;

    /// The tab has come to the front or gone to the back: takes over what the user did to the
    /// toolbar in another one.
    void OnWindowStateChanged() noexcept;

    /// Where the events that it hears are described.
    static constexpr GUID EventSourceLibrary = platform::kBrowserEventLibrary;
    static constexpr IID EventInterface = platform::kBrowserEvents;
    static constexpr WORD EventLibraryVersion[] = {1, 1};  // Major, minor.

private:
    static constexpr DWORD kNotConnected = 0xFEFEFEFE;

    ~QVDIEaddinBHO() = default;  // Ends through Release.

    void Disconnect() noexcept;
    void TakeHelperRole(IWebBrowser2& browser) noexcept;
    HRESULT TakeBandRole(IOleWindow& bar) noexcept;
    void FindBrowser() noexcept;
    HRESULT Connect() noexcept;
    [[nodiscard]] platform::ComPtr<IConnectionPoint> EventSource() const noexcept;

    platform::ComPtr<IUnknown> Site;
    DWORD EventCookie = kNotConnected;
    ULONG ReferenceCount = 0;
    BandWindow Window;
    platform::ComPtr<IWebBrowser2> Browser;
    platform::ComPtr<IInputObjectSite> InputObjectSite;

    EventSink sink_;
    AUX::TypeInfoHolder types_;
    ModuleUse use_;
};

/// Makes an object and asks it for an interface. E_OUTOFMEMORY, or what QueryInterface gives.
[[nodiscard]] HRESULT MakeBrowserHelperObject(REFIID id, void** object) noexcept;
