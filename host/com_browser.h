#pragma once

#include <memory>

#include "host/event_source.h"
#include "host/page_document.h"

namespace host {

/// What a browser can do with the bars of its tab.
class BrowserBars {
public:
    virtual ~BrowserBars() = default;
    /// Shows or hides the toolbar of a class, which is made when it is first shown.
    virtual HRESULT Show(REFCLSID classId, bool shows) = 0;
};

/// The browser of one tab, showing one page. Lives on the tab's thread. Add-ins find it as a
/// service of the sites that they are put into, and hear its events.
class Browser final
    : public platform::ComObject<platform::NotImplemented<IWebBrowser2>, IServiceProvider,
                                 platform::NotImplemented<IConnectionPointContainer>> {
public:
    /// \param page    Null is a tab that shows none.
    /// \param window  The browser's top window, borrowed; may be null.
    /// \param bars    Borrowed until CloseBars; null is a browser without toolbars.
    explicit Browser(std::shared_ptr<PageDocument> page, HWND window = nullptr,
                     BrowserBars* bars = nullptr);

    /// Shows no page any more. What others still hold of the page keeps it.
    void ClosePage() noexcept { page_.reset(); }
    /// Has no toolbars any more.
    void CloseBars() noexcept { bars_ = nullptr; }
    /// Tells the add-ins that the tab has come to the front or gone to the back.
    void ChangeWindowState(bool isInFront) noexcept;

    HRESULT STDMETHODCALLTYPE get_Document(IDispatch** document) noexcept override;
    HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR* address) noexcept override;
    HRESULT STDMETHODCALLTYPE get_HWND(SHANDLE_PTR* window) noexcept override;
    /// \param size  Passed over. \return E_INVALIDARG for a class that is no id as text; E_FAIL
    ///              without bars; what making the toolbar gave.
    HRESULT STDMETHODCALLTYPE ShowBrowserBar(VARIANT* classId, VARIANT* shows,
                                             VARIANT* size) noexcept override;

    /// Answers for the top of the browser and for the tab's browser; E_NOINTERFACE else.
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID id,
                                           void** object) noexcept override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID id,
                                                  IConnectionPoint** point) noexcept override;

private:
    std::shared_ptr<PageDocument> page_;
    HWND window_;
    BrowserBars* bars_;
    platform::ComPtr<EventSource> events_;  // null when memory ran out
};

}  // namespace host
