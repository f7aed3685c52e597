#pragma once

#include <memory>

#include "host/document_model.h"
#include "platform/com_object.h"
#include "platform/html_defaults.h"

namespace host {

/// The browser of one tab, showing one page. Lives on the tab's thread.
class Browser final : public platform::ComObject<platform::NotImplemented<IWebBrowser2>> {
public:
    /// \param model   The page; null is a tab that shows none.
    /// \param window  The browser's top window, borrowed; may be null.
    explicit Browser(std::shared_ptr<const DocumentModel> model, HWND window = nullptr) noexcept;

    HRESULT STDMETHODCALLTYPE get_Document(IDispatch** document) noexcept override;
    HRESULT STDMETHODCALLTYPE get_LocationURL(BSTR* address) noexcept override;
    HRESULT STDMETHODCALLTYPE get_HWND(SHANDLE_PTR* window) noexcept override;

private:
    std::shared_ptr<const DocumentModel> model_;
    HWND window_;
};

}  // namespace host
