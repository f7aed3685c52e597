#include "driver/document_height.h"

#include <algorithm>
#include <type_traits>

#include "platform/com_ptr.h"

namespace {

constexpr std::uint32_t kDefaultHeight = 800;

/// 0 if there is no element, or it does not know its height.
std::int32_t ScrollHeight(const platform::ComPtr<IHTMLElement>& element) noexcept {
    const auto measured = element.As<IHTMLElement2>();
    // The call's own type: 32 bits, but not the same name on every system.
    std::remove_pointer_t<PLONG> height = 0;
    if (!measured || FAILED(measured->get_scrollHeight(&height))) return 0;
    return height;
}

}  // namespace

std::uint32_t MeasureDocumentHeight(IHTMLDocument2* document) noexcept {
    if (!document) return kDefaultHeight;
    const platform::ComPtr<IHTMLDocument2> page(document);
    const auto structure = page.As<IHTMLDocument3>();
    platform::ComPtr<IHTMLElement> body;
    if (FAILED(page->get_body(body.Put()))) body.Reset();

    std::int32_t height = 0;
    if (structure) {
        platform::ComPtr<IHTMLElement> root;
        if (SUCCEEDED(structure->get_documentElement(root.Put()))) height = ScrollHeight(root);
    }
    if (body) height = std::max(height, ScrollHeight(body));
    // A page may answer with anything, also with less than nothing.
    return height > 0 ? static_cast<std::uint32_t>(height) : kDefaultHeight;
}
