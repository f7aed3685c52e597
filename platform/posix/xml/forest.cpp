#include "platform/posix/xml/forest.h"

#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>
#include <utility>

#include "platform/text.h"

namespace platform::xml {

Forest::~Forest() {
    for (xmlDoc* const tree : trees_) xmlFreeDoc(tree);
}

std::shared_ptr<Forest> Forest::Whole(std::shared_ptr<Forest> part) {
    while (part->joined_) part = part->joined_;
    return part;
}

void Forest::Join(const std::shared_ptr<Forest>& a, const std::shared_ptr<Forest>& b) {
    const std::shared_ptr<Forest> into = Whole(a);
    const std::shared_ptr<Forest> from = Whole(b);
    if (into == from) return;
    into->trees_.insert(into->trees_.end(), from->trees_.begin(), from->trees_.end());
    from->trees_.clear();
    from->joined_ = into;
}

namespace {

bool CanMove(const xmlNode& node) {
    switch (node.type) {
        case XML_ELEMENT_NODE:
        case XML_TEXT_NODE:
        case XML_CDATA_SECTION_NODE:
        case XML_COMMENT_NODE:
        case XML_PI_NODE:
            return true;
        default:
            return false;
    }
}

bool IsWithin(const xmlNode* node, const xmlNode* top) {
    while (node && node != top) node = node->parent;
    return node == top;
}

}  // namespace

HRESULT MoveNode(const Place& parent, const Place& child) {
    xmlNode* const target = parent.node;
    xmlNode* const node = child.node;
    if (!target || !node || target->type != XML_ELEMENT_NODE || !CanMove(*node) ||
        IsWithin(target, node)) {
        return E_FAIL;
    }
    Forest::Join(parent.forest, child.forest);
    xmlUnlinkNode(node);
    xmlSetTreeDoc(node, target->doc);
    // Linked by hand: the library's own call melts neighbouring texts into one and frees the other,
    // which an object may still stand for.
    node->parent = target;
    node->prev = target->last;
    (target->last ? target->last->next : target->children) = node;
    target->last = node;
    return S_OK;
}

HRESULT Select(const Place& start, const WCHAR* query, std::vector<xmlNode*>& nodes) {
    if (!start.node) return S_OK;
    const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
        xmlXPathNewContext(start.node->doc), xmlXPathFreeContext);
    if (!context) return E_OUTOFMEMORY;
    context->node = start.node;
    context->error = [](void*, xmlError*) {};  // Else it is printed.
    const std::string path = ToUtf8(query);
    const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> result(
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(path.c_str()), context.get()),
        xmlXPathFreeObject);
    if (!result || result->type != XPATH_NODESET) return E_FAIL;
    if (!result->nodesetval) return S_OK;
    xmlXPathNodeSetSort(result->nodesetval);
    for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
        xmlNode* const node = result->nodesetval->nodeTab[i];
        // A namespace is a copy that goes with the result.
        if (node->type != XML_NAMESPACE_DECL) nodes.push_back(node);
    }
    return S_OK;
}

}  // namespace platform::xml
