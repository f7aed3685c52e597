#include "objects/path_item.h"

#include "cab/item_path.h"
#include "cab/nil_item.h"

namespace AUX {

using CAB::DataItem;
using CAB::Kind;

std::unique_ptr<PathItem> PathItem::Make(DataItem& parent, WStringView path) noexcept {
    std::unique_ptr<PathItem> made(new (std::nothrow) PathItem);
    if (!made || !made->path_.Assign(path)) return nullptr;
    if (parent.IsProxyOwned()) {
        made->missingParent_.reset(static_cast<PathItem*>(parent.Attach()));
        return made->missingParent_ ? std::move(made) : nullptr;
    }
    return made->parent_.Watch(parent) ? std::move(made) : nullptr;
}

DataItem* PathItem::Attach() noexcept {
    std::unique_ptr<PathItem> copy(new (std::nothrow) PathItem);
    if (!copy || !copy->path_.Assign(path_)) return nullptr;
    copy->parent_ = parent_;
    copy->target_ = target_;
    if (missingParent_) {
        copy->missingParent_.reset(static_cast<PathItem*>(missingParent_->Attach()));
        if (!copy->missingParent_) return nullptr;
    }
    return copy.release();
}

bool PathItem::SetText(WStringView text) noexcept {
    WString copy;
    return copy.Assign(text) && Write(Kind::String).SetString(copy, true);
}

bool PathItem::IsOrphan() const noexcept {
    if (target_.IsSet()) return !target_.Get();
    return missingParent_ ? missingParent_->IsOrphan() : !parent_.Get();
}

DataItem* PathItem::Start(WString& path) noexcept {
    DataItem* start = parent_.Get();
    if (missingParent_) {
        start = missingParent_->Find();
        if (!start) start = missingParent_->Start(path);
    }
    const bool needsDot = !path.IsEmpty() && !path_.IsEmpty() && path_.Text()[0] != '[';
    if (needsDot && !path.Append(TEXT("."))) return nullptr;
    return path.Append(path_) ? start : nullptr;
}

DataItem* PathItem::Find() noexcept {
    if (target_.IsSet()) return target_.Get();
    WString path;
    DataItem* const start = Start(path);
    DataItem* const found = start ? CAB::FindPath(*start, path) : nullptr;
    return found && found->GetType() != Kind::None ? found : nullptr;
}

// Without memory for the watch it stays unbound, and finds the item again the next time.
DataItem& PathItem::BindTo(DataItem& item) noexcept {
    if (!target_.IsSet() && target_.Watch(item)) {
        parent_.Drop();
        missingParent_.reset();
    }
    return item;
}

DataItem& PathItem::Read() noexcept {
    DataItem* const found = Find();
    return found ? BindTo(*found) : CAB::NilItem();
}

DataItem& PathItem::Write(Kind kind) noexcept {
    if (DataItem* const found = Find()) return BindTo(*found);
    if (kind == Kind::None || target_.IsSet()) return CAB::NilItem();
    WString path;
    DataItem* const start = Start(path);
    DataItem* const made = start ? CAB::MakePath(*start, path, kind) : nullptr;
    return made ? BindTo(*made) : CAB::NilItem();
}

}  // namespace AUX
