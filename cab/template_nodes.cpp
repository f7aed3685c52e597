#include "cab/template_nodes.h"

#include "platform/unique_variant.h"

namespace AUX::CAB {

namespace {

using platform::ComPtr;

ElementPtr ElementOf(IXMLDOMNode& node) {
    void* element = nullptr;
    Check(node.QueryInterface(platform::InterfaceId<IXMLDOMElement>(), &element));
    ElementPtr found;
    found.Attach(static_cast<IXMLDOMElement*>(element));
    return found;
}

Vector<ComPtr<IXMLDOMNode>> NodesOf(IXMLDOMNodeList& list) {
    Vector<ComPtr<IXMLDOMNode>> nodes;
    for (;;) {
        ComPtr<IXMLDOMNode> node;
        Check(list.nextNode(node.Put()));
        if (!node) return nodes;
        nodes.push_back(std::move(node));
    }
}

}  // namespace

HRESULT Check(HRESULT status) {
    if (status == E_OUTOFMEMORY) throw std::bad_alloc();
    if (FAILED(status)) throw ComFailure{status};
    return status;
}

OwnBstr::OwnBstr(WStringView text)
    : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {
    if (!text_) throw std::bad_alloc();
}

ElementPtr FindChild(IXMLDOMNode& parent, WStringView name, WStringView id) {
    KeyText query(name);
    if (!id.empty()) {
        query += TEXT("[@id='");
        query.append(id.data(), id.size());
        query += TEXT("']");
    }
    ComPtr<IXMLDOMNode> node;
    const HRESULT result = parent.selectSingleNode(OwnBstr(query).Get(), node.Put());
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();
    return SUCCEEDED(result) && node ? ElementOf(*node.Get()) : ElementPtr();
}

Vector<ElementPtr> ChildrenNamed(IXMLDOMNode& parent, WStringView name) {
    ComPtr<IXMLDOMNodeList> list;
    Check(parent.selectNodes(OwnBstr(name).Get(), list.Put()));
    Vector<ElementPtr> elements;
    for (const auto& node : NodesOf(*list.Get())) elements.push_back(ElementOf(*node.Get()));
    return elements;
}

Vector<ComPtr<IXMLDOMNode>> ChildNodes(IXMLDOMNode& parent) {
    ComPtr<IXMLDOMNodeList> list;
    Check(parent.get_childNodes(list.Put()));
    return NodesOf(*list.Get());
}

KeyText AttributeOf(IXMLDOMElement& element, WStringView name) {
    platform::UniqueVariant value;
    Check(element.getAttribute(OwnBstr(name).Get(), value.Put()));
    const VARIANT& text = value.Get();
    if (text.vt != VT_BSTR || !text.bstrVal) return {};
    return KeyText(text.bstrVal, SysStringLen(text.bstrVal));
}

}  // namespace AUX::CAB
