#pragma once

#include <memory>

#include "host/page_document.h"
#include "platform/com_object.h"
#include "platform/html_defaults.h"

namespace host {

/// The browser of one tab, showing one page. Lives on the tab's thread.
class Browser final : public platform::ComObject<platform::NotImplemented<IWebBrowser2>> {
public:
    /// \param page    Null is a tab that shows none.
    /// \param window  The browser's top window, borrowed; may be null.
    explicit Browser(std::shared_ptr<PageDocument> page, HWND window = nullptr) noexcept;

    /// Shows no page any more. What others still hold of the page keeps it.
    void ClosePage() noexcept { page_.reset(); }

    HRESULT STDMETHODCALLTYPE get_Document(IDispatch** document) noexcept override;
    HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR* address) noexcept override;
    HRESULT STDMETHODCALLTYPE get_HWND(SHANDLE_PTR* window) noexcept override;

private:
    std::shared_ptr<PageDocument> page_;
    HWND window_;
};

}  // namespace host
