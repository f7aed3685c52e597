#pragma once

#include "platform/com_object.h"
#include "platform/posix/xml/forest.h"
#include "platform/posix/xml_types.h"

namespace platform::xml {

/// What tells a node of ours from one of others.
class Placed {
public:
    [[nodiscard]] virtual const Place& GetPlace() const noexcept = 0;

protected:
    ~Placed() = default;
};

HRESULT GetChildNodes(const Place& place, IXMLDOMNodeList** nodes);
HRESULT AppendChild(const Place& place, IXMLDOMNode* child, IXMLDOMNode** added);
HRESULT SelectNodes(const Place& place, BSTR query, IXMLDOMNodeList** nodes);
HRESULT SelectSingleNode(const Place& place, BSTR query, IXMLDOMNode** node);

/// The operations that all sorts of nodes have in common.
template <class Interface>
class NodeObject : public ComObject<Interface>, public Placed {
public:
    [[nodiscard]] const Place& GetPlace() const noexcept override { return place_; }

    HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** nodes) noexcept override {
        return GetChildNodes(place_, nodes);
    }
    HRESULT STDMETHODCALLTYPE appendChild(IXMLDOMNode* child,
                                          IXMLDOMNode** added) noexcept override {
        return AppendChild(place_, child, added);
    }
    HRESULT STDMETHODCALLTYPE selectNodes(BSTR query, IXMLDOMNodeList** nodes) noexcept override {
        return SelectNodes(place_, query, nodes);
    }
    HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR query, IXMLDOMNode** node) noexcept override {
        return SelectSingleNode(place_, query, node);
    }

protected:
    NodeObject() noexcept = default;
    explicit NodeObject(Place place) noexcept : place_(std::move(place)) {}

    void* AnswersAlso(REFIID id) noexcept override {
        return id == InterfaceId<IXMLDOMNode>() ? static_cast<IXMLDOMNode*>(this) : nullptr;
    }

    Place place_;
};

}  // namespace platform::xml
