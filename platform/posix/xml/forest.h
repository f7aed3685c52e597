#pragma once

#include <libxml/tree.h>
#include <memory>
#include <vector>

#include "platform/base.h"

namespace platform::xml {

/// Trees that live and go together: nodes of one may have moved into another, and objects for them
/// may hold on to either. Shared by these objects.
class Forest {
public:
    Forest() = default;
    ~Forest();
    Forest(const Forest&) = delete;
    Forest& operator=(const Forest&) = delete;

    /// Owns a tree from now on.
    void Plant(xmlDoc* tree) { trees_.push_back(tree); }

    /// Makes one forest of two.
    static void Join(const std::shared_ptr<Forest>& a, const std::shared_ptr<Forest>& b);

private:
    static std::shared_ptr<Forest> Whole(std::shared_ptr<Forest> part);

    std::vector<xmlDoc*> trees_;
    /// The forest that this one has gone into. Never leads back here.
    std::shared_ptr<Forest> joined_;
};

/// A node, and what keeps it alive.
struct Place {
    std::shared_ptr<Forest> forest;
    xmlNode* node = nullptr;  ///< Null: the document is empty.
};

/// Moves a node behind the last child of an element. \return E_FAIL for what cannot lie there.
HRESULT MoveNode(const Place& parent, const Place& child);

/// The nodes of an XPath, in the order of the document. \return E_FAIL for what is no such path.
HRESULT Select(const Place& start, const WCHAR* query, std::vector<xmlNode*>& nodes);

}  // namespace platform::xml
