#include "platform/posix/xml/nodes.h"

#include "platform/text.h"
#include "platform/unique_bstr.h"

namespace platform::xml {

namespace {

class PlainNode final : public NodeObject<IXMLDOMNode> {
public:
    explicit PlainNode(Place place) noexcept : NodeObject(std::move(place)) {}
};

class Element final : public NodeObject<IXMLDOMElement> {
public:
    explicit Element(Place place) noexcept : NodeObject(std::move(place)) {}

    HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT* value) noexcept override {
        if (!name || !value) return E_INVALIDARG;
        VariantInit(value);
        value->vt = VT_NULL;
        const std::string wanted = ToUtf8(name);
        const std::unique_ptr<xmlChar, void (*)(xmlChar*)> text(
            xmlGetNoNsProp(place_.node, reinterpret_cast<const xmlChar*>(wanted.c_str())),
            [](xmlChar* owned) { xmlFree(owned); });
        if (!text) return S_FALSE;
        const WideString wide = FromUtf8(reinterpret_cast<const char*>(text.get()));
        BSTR const copy = SysAllocStringLen(wide.c_str(), static_cast<UINT>(wide.size()));
        if (!copy) return E_OUTOFMEMORY;
        value->vt = VT_BSTR;
        value->bstrVal = copy;
        return S_OK;
    }
};

HRESULT MakeNode(const Place& place, IXMLDOMNode** object) {
    if (place.node->type == XML_ELEMENT_NODE) {
        *object = MakeObject<Element>(place).Detach();
    } else {
        *object = MakeObject<PlainNode>(place).Detach();
    }
    return *object ? S_OK : E_OUTOFMEMORY;
}

class NodeList final : public ComObject<IXMLDOMNodeList> {
public:
    NodeList(std::shared_ptr<Forest> forest, std::vector<xmlNode*> nodes) noexcept
        : forest_(std::move(forest)), nodes_(std::move(nodes)) {}

    HRESULT STDMETHODCALLTYPE get_length(LONG* length) noexcept override {
        if (!length) return E_INVALIDARG;
        *length = static_cast<LONG>(nodes_.size());
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** node) noexcept override {
        if (!node) return E_INVALIDARG;
        *node = nullptr;
        return next_ < nodes_.size() ? MakeNode({forest_, nodes_[next_++]}, node) : S_FALSE;
    }

private:
    std::shared_ptr<Forest> forest_;
    std::vector<xmlNode*> nodes_;
    std::size_t next_ = 0;
};

HRESULT MakeList(const Place& place, std::vector<xmlNode*> nodes, IXMLDOMNodeList** list) {
    *list = MakeObject<NodeList>(place.forest, std::move(nodes)).Detach();
    return *list ? S_OK : E_OUTOFMEMORY;
}

}  // namespace

HRESULT GetChildNodes(const Place& place, IXMLDOMNodeList** nodes) {
    if (!nodes) return E_INVALIDARG;
    std::vector<xmlNode*> children;
    // The children of an attribute or an entity are no nodes of this model.
    const bool isParent = place.node && (place.node->type == XML_ELEMENT_NODE ||
                                         place.node->type == XML_DOCUMENT_NODE);
    for (xmlNode* child = isParent ? place.node->children : nullptr; child; child = child->next) {
        children.push_back(child);
    }
    return MakeList(place, std::move(children), nodes);
}

HRESULT AppendChild(const Place& place, IXMLDOMNode* child, IXMLDOMNode** added) {
    if (added) *added = nullptr;
    const auto* const placed = dynamic_cast<Placed*>(child);
    if (!placed) return E_INVALIDARG;
    const HRESULT result = MoveNode(place, placed->GetPlace());
    if (FAILED(result) || !added) return result;
    child->AddRef();
    *added = child;
    return S_OK;
}

HRESULT SelectNodes(const Place& place, BSTR query, IXMLDOMNodeList** nodes) {
    if (!query || !nodes) return E_INVALIDARG;
    *nodes = nullptr;
    std::vector<xmlNode*> found;
    const HRESULT result = Select(place, query, found);
    return SUCCEEDED(result) ? MakeList(place, std::move(found), nodes) : result;
}

HRESULT SelectSingleNode(const Place& place, BSTR query, IXMLDOMNode** node) {
    if (!query || !node) return E_INVALIDARG;
    *node = nullptr;
    std::vector<xmlNode*> found;
    const HRESULT result = Select(place, query, found);
    if (FAILED(result)) return result;
    return found.empty() ? S_FALSE : MakeNode({place.forest, found[0]}, node);
}

}  // namespace platform::xml
