#pragma once

#include <memory>
#include <vector>

#include "host/page_document.h"
#include "platform/com_object.h"
#include "platform/html_defaults.h"

namespace host {

/// The frames that a document had when it was asked.
class FramesCollection final
    : public platform::ComObject<platform::NotImplemented<IHTMLFramesCollection2>> {
public:
    explicit FramesCollection(std::vector<std::shared_ptr<PageDocument>> frames) noexcept;

    HRESULT STDMETHODCALLTYPE item(VARIANT* index, VARIANT* window) noexcept override;
    HRESULT STDMETHODCALLTYPE get_length(LONG* length) noexcept override;

private:
    std::vector<std::shared_ptr<PageDocument>> frames_;
};

/// The window of a frame.
class Window final : public platform::ComObject<platform::NotImplemented<IHTMLWindow2>> {
public:
    /// \param page  Null: the page may not reach it.
    explicit Window(std::shared_ptr<PageDocument> page) noexcept;

    HRESULT STDMETHODCALLTYPE get_document(IHTMLDocument2** document) noexcept override;

private:
    std::shared_ptr<PageDocument> page_;
};

}  // namespace host
