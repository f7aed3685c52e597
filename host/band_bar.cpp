#include "host/band_bar.h"

#include <algorithm>
#include <utility>

#include "host/window_class.h"

namespace host {
namespace {

/// The site of a band. The band may keep it longer than the tab lives, so it knows nothing but a
/// window and the browser's object.
class BandSite final : public platform::ComObject<IOleWindow, IServiceProvider, IInputObjectSite> {
public:
    BandSite(HWND bar, platform::ComPtr<Browser> browser)
        : bar_(bar), browser_(std::move(browser)) {}

    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) noexcept override {
        if (!window) return E_POINTER;
        *window = bar_;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) noexcept override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID id,
                                           void** object) noexcept override {
        if (object) *object = nullptr;
        return browser_ ? browser_->QueryService(service, id, object) : E_NOINTERFACE;
    }

    /// There is no keyboard to hand on.
    HRESULT STDMETHODCALLTYPE OnFocusChangeIS(IUnknown*, BOOL) noexcept override { return S_OK; }

private:
    HWND bar_;
    platform::ComPtr<Browser> browser_;
};

}  // namespace

BandBar::Band* BandBar::Find(REFCLSID classId) noexcept {
    const auto found = std::ranges::find_if(
        bands_, [&](const Band& band) { return IsEqualGUID(band.classId, classId) != 0; });
    return found == bands_.end() ? nullptr : &*found;
}

HWND BandBar::WindowOf(REFCLSID classId) const noexcept {
    const Band* const band = const_cast<BandBar*>(this)->Find(classId);
    return band ? band->window : nullptr;
}

bool BandBar::IsShown(REFCLSID classId) const noexcept {
    const Band* const band = const_cast<BandBar*>(this)->Find(classId);
    return band && band->isShown;
}

HRESULT BandBar::Show(REFCLSID classId, bool shows) {
    Band* band = Find(classId);
    if (!band) {
        // What is to be hidden need not be made.
        if (!shows) return S_OK;
        const HRESULT result = MakeBand(classId);
        if (FAILED(result)) return result;
        band = &bands_.back();
    }
    band->isShown = shows;
    const HRESULT result = band->object->ShowDW(shows ? TRUE : FALSE);
    if (band->window) ShowWindow(band->window, shows ? SW_SHOW : SW_HIDE);
    Arrange();
    return result;
}

bool BandBar::MakeBar() noexcept {
    if (bar_) return true;
    RECT client{};
    GetClientRect(tab_, &client);
    bar_ = CreateWindowExW(0, WindowClass(TEXT("QuvadaHostBar"), DefWindowProcW), nullptr,
                           WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0, client.right, 0, tab_,
                           nullptr, nullptr, nullptr);
    return bar_ != nullptr;
}

HRESULT BandBar::MakeBand(REFCLSID classId) {
    if (!addins_.OffersToolbar(classId)) return REGDB_E_CLASSNOTREG;
    if (!MakeBar()) return E_FAIL;
    Band band{classId, {}, nullptr, 0, false};
    HRESULT result = addins_.Make(classId, band.object);
    if (FAILED(result)) return result;
    const auto sited = band.object.As<IObjectWithSite>();
    const auto site = platform::MakeObject<BandSite>(bar_, platform::ComPtr<Browser>(browser_));
    if (!sited || !site) return site ? E_NOINTERFACE : E_OUTOFMEMORY;
    bands_.reserve(bands_.size() + 1);  // From here on nothing throws: the site is taken back.
    result = sited->SetSite(static_cast<IOleWindow*>(site.Get()));
    if (SUCCEEDED(result)) result = band.object->GetWindow(&band.window);
    if (FAILED(result)) {
        (void)sited->SetSite(nullptr);
        return result;
    }
    bands_.push_back(std::move(band));
    return S_OK;
}

// Asks each band for its size, and lays the bands that are shown below each other.
void BandBar::Arrange() noexcept {
    RECT client{};
    GetClientRect(tab_, &client);
    LONG top = 0;
    for (std::size_t i = 0; i < bands_.size(); ++i) {
        Band& band = bands_[i];
        DESKBANDINFO info = {};
        info.dwMask = DBIM_MINSIZE;
        if (SUCCEEDED(band.object->GetBandInfo(static_cast<DWORD>(i), 0, &info))) {
            band.height = info.ptMinSize.y;
        }
        if (!band.isShown || !band.window) continue;
        MoveWindow(band.window, 0, top, client.right, band.height, TRUE);
        top += band.height;
    }
    MoveWindow(bar_, 0, 0, client.right, top, TRUE);
}

void BandBar::Close() noexcept {
    for (Band& band : std::exchange(bands_, {})) {
        (void)band.object->CloseDW(0);
        if (const auto sited = band.object.As<IObjectWithSite>()) (void)sited->SetSite(nullptr);
    }
    browser_ = nullptr;
}

}  // namespace host
