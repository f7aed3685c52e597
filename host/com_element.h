#pragma once

#include "platform/com_object.h"
#include "platform/html_defaults.h"

namespace host {

/// One element of a loaded page.
class Element final : public platform::ComObject<platform::NotImplemented<IHTMLElement>,
                                                 platform::NotImplemented<IHTMLElement2>> {
public:
    explicit Element(LONG scrollHeight) noexcept : scrollHeight_(scrollHeight) {}

    HRESULT STDMETHODCALLTYPE get_scrollHeight(LONG* height) noexcept override;

private:
    LONG scrollHeight_;
};

}  // namespace host
