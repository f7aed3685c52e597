#pragma once

#include "cab/library_allocator.h"
#include "platform/com_ptr.h"
#include "platform/xml.h"

/// Questions to the elements of a template's document. They throw ComFailure where the document
/// gives a failure, and std::bad_alloc.
namespace AUX::CAB {

/// A status that came out of COM.
struct ComFailure {
    HRESULT status;
};

/// \return `status`, if it is a success.
/// \throw std::bad_alloc for E_OUTOFMEMORY, else ComFailure.
HRESULT Check(HRESULT status);

/// A BSTR of a text. \throw std::bad_alloc
class OwnBstr {
public:
    explicit OwnBstr(WStringView text);
    ~OwnBstr() { SysFreeString(text_); }
    OwnBstr(const OwnBstr&) = delete;
    OwnBstr& operator=(const OwnBstr&) = delete;
    [[nodiscard]] BSTR Get() const noexcept { return text_; }

private:
    BSTR text_;
};

using ElementPtr = platform::ComPtr<IXMLDOMElement>;

/// The first child element of a name; of those that have this attribute, if `id` is not empty.
/// \param id  Goes into the question as it stands: with a quote in it there is no such element.
/// \return null if there is none.
[[nodiscard]] ElementPtr FindChild(IXMLDOMNode& parent, WStringView name, WStringView id);

/// All child elements of a name, in the order of the document.
[[nodiscard]] Vector<ElementPtr> ChildrenNamed(IXMLDOMNode& parent, WStringView name);

/// All child nodes, as they are now.
[[nodiscard]] Vector<platform::ComPtr<IXMLDOMNode>> ChildNodes(IXMLDOMNode& parent);

/// The text of an attribute; empty if it is not there.
[[nodiscard]] KeyText AttributeOf(IXMLDOMElement& element, WStringView name);

}  // namespace AUX::CAB
