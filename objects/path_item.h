#pragma once

#include <memory>

#include "cab/item_forwarder.h"
#include "foundation/wstring.h"
#include "objects/item_face.h"

namespace AUX {

/// A place in a tree where nothing stands yet. Reading finds what has come into being there;
/// writing makes it. Once it has an item it stays bound to that. Its face owns it.
class PathItem final : public CAB::ItemForwarder {
public:
    /// \param parent  Where the path begins; another PathItem is copied.
    /// \return null when memory runs out.
    [[nodiscard]] static std::unique_ptr<PathItem> Make(CAB::DataItem& parent,
                                                        WStringView path) noexcept;

    [[nodiscard]] CAB::DataItem* Attach() noexcept override;
    /// Makes no item when memory for the text runs out.
    [[nodiscard]] bool SetText(WStringView text) noexcept override;

    /// Whether the item that it was bound to, or the one that its path begins at, has gone.
    [[nodiscard]] bool IsOrphan() const noexcept;

protected:
    [[nodiscard]] CAB::DataItem& Read() noexcept override;
    [[nodiscard]] CAB::DataItem& Write(CAB::Kind kind) noexcept override;

private:
    PathItem() noexcept = default;
    /// The item that stands where the whole path begins, through parents that are missing
    /// themselves, and that path. \return null if it has gone, or memory runs out.
    [[nodiscard]] CAB::DataItem* Start(WString& path) noexcept;
    [[nodiscard]] CAB::DataItem* Find() noexcept;
    [[nodiscard]] CAB::DataItem& BindTo(CAB::DataItem& item) noexcept;

    std::unique_ptr<PathItem> missingParent_;
    ItemWatch parent_;
    WString path_;
    ItemWatch target_;
};

}  // namespace AUX
