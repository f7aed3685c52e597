#include "browser/browser_helper_object.h"

#include <new>

#include "browser/explorer_test.h"
#include "browser/screen_scale.h"
#include "browser/toolbar_state.h"
#include "browser/type_library.h"
#include "platform/unique_bstr.h"

namespace {

constexpr int kLeastWidth = 41;  // In pixels at 96 dots an inch: the button's.

// Has a browser show or hide the toolbar. A browser that does not is left as it is.
void ShowToolbar(IWebBrowser2& browser, bool shows) noexcept {
    const platform::UniqueBstr text(SysAllocString(kAddinClassText));
    if (!text.Get()) return;
    VARIANT classId = {};
    classId.vt = VT_BSTR;
    classId.bstrVal = text.Get();
    VARIANT flag = {};
    flag.vt = VT_BOOL;
    flag.boolVal = shows ? VARIANT_TRUE : VARIANT_FALSE;
    (void)browser.ShowBrowserBar(&classId, &flag, nullptr);
}

HRESULT LoadOwnTypes(ITypeInfo** info) noexcept {
    platform::ComPtr<ITypeLib> library;
    const HRESULT result = LoadAddinTypeLibrary(library);
    return FAILED(result)
               ? result
               : library->GetTypeInfoOfGuid(platform::InterfaceId<IQVDIEaddinBHO>(), info);
}

// Asks an object for one of its services.
template <class T>
platform::ComPtr<T> Service(IServiceProvider* provider, REFGUID service) noexcept {
    platform::ComPtr<T> found;
    void* object = nullptr;
    if (provider &&
        SUCCEEDED(provider->QueryService(service, platform::InterfaceId<T>(), &object))) {
        found.Attach(static_cast<T*>(object));
    }
    return found;
}

}  // namespace

QVDIEaddinBHO::QVDIEaddinBHO() noexcept : sink_(*this), types_(LoadOwnTypes) {}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::QueryInterface(REFIID id, void** object) noexcept {
    if (!object) return E_POINTER;
    *object = nullptr;
    const auto is = [&id](const IID& known) { return IsEqualIID(id, known) != 0; };
    if (is(platform::InterfaceId<IUnknown>()) || is(platform::InterfaceId<IQVDIEaddinBHO>()) ||
        is(platform::InterfaceId<IDispatch>())) {
        *object = static_cast<IQVDIEaddinBHO*>(this);
    } else if (is(platform::InterfaceId<IObjectWithSite>())) {
        *object = static_cast<IObjectWithSite*>(this);
    } else if (is(platform::InterfaceId<IOleWindow>()) ||
               is(platform::InterfaceId<IDockingWindow>()) ||
               is(platform::InterfaceId<IDeskBand>())) {
        *object = static_cast<IDeskBand*>(this);  // Its table begins with those of the other two.
    } else if (is(platform::InterfaceId<IInputObject>())) {
        *object = static_cast<IInputObject*>(this);
    } else if (is(platform::InterfaceId<IDocHostUIHandler>())) {
        *object = static_cast<IDocHostUIHandler*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE QVDIEaddinBHO::AddRef() noexcept { return ++ReferenceCount; }

ULONG STDMETHODCALLTYPE QVDIEaddinBHO::Release() noexcept {
    const ULONG left = --ReferenceCount;
    if (left > 0) return left;
    // Windows that end call back: those calls must not bring the count to 0 once more.
    ReferenceCount = 1;
    delete this;
    return 0;
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::GetTypeInfoCount(UINT* count) noexcept {
    return types_.GetTypeInfoCount(count);
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept {
    return types_.GetTypeInfo(index, info);
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                                       LCID, DISPID* ids) noexcept {
    return types_.GetIDsOfNames(reserved, names, count, ids);
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::Invoke(DISPID member, REFIID reserved, LCID, WORD flags,
                                                DISPPARAMS* parameters, VARIANT* result,
                                                EXCEPINFO* exception,
                                                UINT* argumentError) noexcept {
    return types_.Invoke(static_cast<IQVDIEaddinBHO*>(this), member, reserved, flags, parameters,
                         result, exception, argumentError);
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::SetSite(IUnknown* site) noexcept {
    if (IsExplorer()) return E_NOTIMPL;
    InputObjectSite.Reset();
    if (!site) {
        Disconnect();
        return S_OK;
    }
    Site = platform::ComPtr<IUnknown>(site);
    if (const auto browser = Site.As<IWebBrowser2>()) {
        TakeHelperRole(*browser);
        return S_OK;
    }
    const auto bar = Site.As<IOleWindow>();
    return bar ? TakeBandRole(*bar) : S_OK;
}

void QVDIEaddinBHO::Disconnect() noexcept {
    // A browser that has gone has no events either.
    if (const auto source = EventSource()) (void)source->Unadvise(EventCookie);
    EventCookie = kNotConnected;
}

// The first call has the browser make the band, which the second may hide again.
void QVDIEaddinBHO::TakeHelperRole(IWebBrowser2& browser) noexcept {
    const bool shows = SharedToolbarState().IsShown() != 0;
    ShowToolbar(browser, true);
    ShowToolbar(browser, shows);
}

HRESULT QVDIEaddinBHO::TakeBandRole(IOleWindow& bar) noexcept {
    HWND parent = nullptr;
    if (FAILED(bar.GetWindow(&parent)) || !parent) return S_OK;
    FindBrowser();
    if (Browser) {
        const HRESULT result = Connect();
        if (FAILED(result)) return result;
    }
    InputObjectSite = Site.As<IInputObjectSite>();
    if (Browser) {
        // From a bar that it was in before.
        if (IsWindow(Window.Window)) DestroyWindow(Window.Window);
        (void)Window.Create(parent, Browser.Get());  // A band without a toolbar says nothing.
        Window.Owner = this;
    }
    return S_OK;
}

void QVDIEaddinBHO::FindBrowser() noexcept {
    const auto site = Site.As<IServiceProvider>();
    const auto top = Service<IServiceProvider>(site.Get(), platform::kTopLevelBrowserService);
    auto browser = Service<IWebBrowser2>(top.Get(), platform::kWebBrowserService);
    if (browser) Browser = std::move(browser);
}

platform::ComPtr<IConnectionPoint> QVDIEaddinBHO::EventSource() const noexcept {
    platform::ComPtr<IConnectionPoint> source;
    const auto container = Browser.As<IConnectionPointContainer>();
    if (container && FAILED(container->FindConnectionPoint(EventInterface, source.Put()))) {
        source.Reset();
    }
    return source;
}

// Without events the toolbar works, but does not follow the other tabs.
HRESULT QVDIEaddinBHO::Connect() noexcept {
    if (EventCookie != kNotConnected) return E_FAIL;
    DWORD cookie = 0;
    const auto source = EventSource();
    if (source && SUCCEEDED(source->Advise(&sink_, &cookie))) EventCookie = cookie;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::GetSite(REFIID id, void** site) noexcept {
    if (!site) return E_POINTER;
    *site = nullptr;
    return InputObjectSite ? InputObjectSite->QueryInterface(id, site) : E_FAIL;
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::GetWindow(HWND* window) noexcept {
    if (!window) return E_INVALIDARG;
    *window = Window.Window;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::ContextSensitiveHelp(BOOL) noexcept { return S_OK; }

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::ShowDW(BOOL shows) noexcept {
    if (IsExplorer()) return E_NOTIMPL;
    SharedToolbarState().SetShown(static_cast<DWORD>(shows));
    return S_OK;
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::CloseDW(DWORD) noexcept {
    if (IsExplorer()) return E_NOTIMPL;
    if (IsWindow(Window.Window)) DestroyWindow(Window.Window);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::ResizeBorderDW(const RECT*, IUnknown*, BOOL) noexcept {
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::GetBandInfo(DWORD, DWORD, DESKBANDINFO* info) noexcept {
    if (!info) return S_OK;
    const DWORD mask = info->dwMask;
    constexpr POINTL kAny = {-1, -1};
    if (mask & (DBIM_MINSIZE | DBIM_ACTUAL)) {
        const POINTL size = {Scale(kLeastWidth), Window.Toolbar.ButtonsBottom()};
        if (mask & DBIM_MINSIZE) info->ptMinSize = size;
        if (mask & DBIM_ACTUAL) info->ptActual = size;
    }
    if (mask & DBIM_MAXSIZE) info->ptMaxSize = kAny;
    if (mask & DBIM_INTEGRAL) info->ptIntegral = kAny;
    if (mask & DBIM_TITLE) info->wszTitle[0] = 0;
    if (mask & DBIM_MODEFLAGS) info->dwModeFlags = 0;
    if (mask & DBIM_BKCOLOR) info->dwMask &= ~DBIM_BKCOLOR;  // The browser's own colour.
    return S_OK;
}

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::UIActivateIO(BOOL, MSG*) noexcept { return S_OK; }

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::HasFocusIO() noexcept { return S_OK; }

HRESULT STDMETHODCALLTYPE QVDIEaddinBHO::TranslateAcceleratorIO(MSG*) noexcept { return S_FALSE; }

// Bands are told apart by their addresses: another one may just be ending on its own thread.
void QVDIEaddinBHO::OnWindowStateChanged() noexcept {
    ToolbarState& state = SharedToolbarState();
    const BandWindow* const active = state.GetActive();
    if (active && active != &Window) {
        if (Browser) ShowToolbar(*Browser, state.IsShown() != 0);
        Window.Toolbar.Relayout();
    }
    state.SetActive(&Window);
}

HRESULT MakeBrowserHelperObject(REFIID id, void** object) noexcept {
    auto* const made = new (std::nothrow) QVDIEaddinBHO;
    if (!made) return E_OUTOFMEMORY;
    const platform::ComPtr<QVDIEaddinBHO> owner(made);
    return owner->QueryInterface(id, object);
}
