#include "cab/data_array.h"

#include <algorithm>

#include "cab/create_item.h"
#include "cab/data_dictionary.h"
#include "cab/store.h"

namespace AUX::CAB {

namespace {

constexpr std::uint32_t kLostChild = ItemDirty | ItemChildrenRemoved;

void DeleteAll(Array<DataItem*>& list) noexcept {
    for (DataItem* const item : list) delete item;
    list.Free();
}

}  // namespace

bool IsBelow(DataItem& top, DataItem& item) noexcept {
    DataContainer* const container = top.AsContainer();
    if (!container) return false;
    for (std::uint32_t i = 0; i < container->GetCount(); ++i) {
        DataItem* const child = container->ItemAt(i);
        if (child && (child == &item || IsBelow(*child, item))) return true;
    }
    return false;
}

DataArray::~DataArray() { DeleteAll(children); }

bool DataArray::Equals(DataItem* other, std::uint32_t equalFlags) noexcept {
    DataItem* const real = other ? other->Cast(Kind::Array) : nullptr;
    if (!real) return false;
    DataArray& array = *real->AsArray();
    if (array.GetCount() != GetCount()) return false;
    for (std::uint32_t i = 0; i < GetCount(); ++i) {
        DataItem* const own = ItemAt(i);
        DataItem* const its = array.ItemAt(i);
        if (own ? !own->Equals(its, equalFlags) : its != nullptr) return false;
    }
    return true;
}

void DataArray::SetStamp(std::uint64_t newStamp) noexcept {
    stamp = newStamp;
    flags &= ~ItemDirty;
}

bool DataArray::SetRoot(DataRoot* newRoot, bool recursive) noexcept {
    root = newRoot;
    source = nullptr;  // An array begins empty.
    if (!recursive) return true;
    bool isWell = true;
    for (DataItem* const child : children) isWell &= !child || child->SetRoot(newRoot, true);
    return isWell;
}

bool DataArray::Preload() noexcept {
    source = nullptr;
    bool isWell = true;
    for (DataItem* const child : children) isWell &= !child || child->Preload();
    return isWell;
}

bool DataArray::WriteTo(DataWriter& sink, bool skipDefaults) noexcept {
    if (!sink.PutContainer(Kind::Array)) return false;
    for (DataItem* const child : children) {
        // Elements at their default are written too: the others would change their index.
        if (!child || child->GetFlags() & ItemTransient) continue;
        DataWriter* const place = sink.Add({}, child->GetStoredType());
        if (!place || !child->WriteTo(*place, skipDefaults)) return false;
    }
    return true;
}

bool DataArray::IsDefault() noexcept {
    for (DataItem* const child : children) {
        if (child && !child->IsDefault()) return false;
    }
    return true;
}

void DataArray::SetTransientAll(bool isTransient) noexcept {
    for (DataItem* const child : children) {
        if (child) child->SetFlags(isTransient ? ItemTransient : 0, ItemTransient);
    }
}

void DataArray::OnSpecChanged() noexcept {
    const ItemSpec* const own = GetSpec();
    elementSpec = own ? own->entries : nullptr;
}

std::unique_ptr<DataItem> DataArray::MakeElement(Kind kind) noexcept {
    return CreateItem(root, this, elementSpec, nullptr, kind);
}

bool DataArray::CopyInto(Array<DataItem*>& list, DataArray& from, bool withFlags) noexcept {
    if (!list.EnsureCapacity(from.GetCount())) return false;
    for (DataItem* const child : from.children) {
        if (!child) {
            (void)list.Add(nullptr);  // There is room.
            continue;
        }
        if (child->GetFlags() & ItemNoCopy) continue;
        std::unique_ptr<DataItem> copy = MakeElement(child->GetType());
        if (!copy) return false;
        if (!copy->AssignUnrelated(*child, withFlags)) continue;
        if (!withFlags) copy->MarkNew();
        (void)list.Add(copy.release());  // Likewise.
    }
    return true;
}

void DataArray::Take(Array<DataItem*>& list) noexcept {
    if (list.Count() < children.Count()) flags |= ItemChildrenRemoved;
    std::swap(children, list);
    DeleteAll(list);
    MarkSet();
}

bool DataArray::AssignValue(DataItem& from, bool withFlags) noexcept {
    DataItem* const real = from.Cast(Kind::Array);
    if (!real) return false;
    Array<DataItem*> list;
    // All is copied before the first old child goes: an array that runs out of memory is as it was.
    if (!CopyInto(list, *real->AsArray(), withFlags)) {
        DeleteAll(list);
        return false;
    }
    Take(list);
    if (withFlags) stamp = real->GetStamp();
    return true;
}

bool DataArray::ApplySpec() noexcept {
    if (children.IsEmpty() || !elementSpec) return true;
    return AssignValue(*this, false);
}

bool DataArray::ResetValue() noexcept {
    if (children.IsEmpty()) return false;
    DeleteAll(children);
    flags |= ItemChildrenRemoved;
    return true;
}

DataItem* DataArray::ItemAt(std::uint32_t index) noexcept {
    return index < children.Count() ? children[index] : nullptr;
}

void DataArray::Clear() noexcept {
    if (children.IsEmpty()) return;
    DeleteAll(children);
    MarkSet(0);
}

bool DataArray::RemoveAt(std::int64_t index) noexcept { return RemoveRange(index, 1); }

bool DataArray::RemoveRange(std::int64_t first, std::uint32_t count) noexcept {
    if (first == -1) first = std::int64_t{children.Count()} - 1;
    if (first < 0 || first > children.Count() || count > children.Count() - first) return false;
    if (count == 0) return true;
    const auto start = static_cast<std::uint32_t>(first);
    for (std::uint32_t i = start; i < start + count; ++i) delete children[i];
    for (std::uint32_t i = start; i + count < children.Count(); ++i) {
        children[i] = children[i + count];
    }
    for (std::uint32_t i = 0; i < count; ++i) children.RemoveAt(children.Count() - 1);
    MarkSet(ItemValueSet | kLostChild);
    return true;
}

bool DataArray::Move(std::int64_t first, std::int64_t to, std::int64_t count) noexcept {
    const std::int64_t all = children.Count();
    if (first < 0 || count < 0 || first > all || count > all - first) return false;
    if (to < 0 || to > all) return false;
    if (count == 0 || (to >= first && to <= first + count)) return true;
    const auto at = [&](std::int64_t index) { return children.begin() + index; };
    if (to < first) {
        std::rotate(at(to), at(first), at(first + count));
    } else {
        std::rotate(at(first), at(first + count), at(to));
    }
    // As after a removal, a save must renew the places.
    MarkSet(ItemValueSet | kLostChild);
    return true;
}

void DataArray::DropAt(std::uint32_t index) noexcept {
    delete children[index];
    children.RemoveAt(index);
}

void DataArray::EmptyAt(std::uint32_t index) noexcept {
    delete children[index];
    children[index] = nullptr;
}

bool DataArray::GrowTo(std::uint32_t count) noexcept {
    if (count <= children.Count()) return true;
    if (!children.EnsureCapacity(count)) return false;
    while (children.Count() < count) (void)children.Add(nullptr);  // There is room.
    MarkSet();
    return true;
}

std::unique_ptr<DataItem> DataArray::NewElement(Kind kind) noexcept {
    if (elementSpec && kind != Kind::None && kind != elementSpec->kind) return nullptr;
    if (!elementSpec && kind == Kind::None) return nullptr;
    std::unique_ptr<DataItem> element = MakeElement(kind);
    if (element) element->MarkNew();
    return element;
}

DataItem* DataArray::InsertAt(std::int64_t index, Kind kind) noexcept {
    if (index < 0 || index > children.Count()) index = children.Count();
    std::unique_ptr<DataItem> element = NewElement(kind);
    if (!element || !children.InsertAt(static_cast<std::uint32_t>(index), element.get())) {
        return nullptr;
    }
    // Before the end it moves others, of which a save must then renew the places.
    const bool isLast = index + 1 == children.Count();
    MarkSet(ItemValueSet | ItemDirty | (isLast ? 0 : ItemChildrenRemoved));
    return element.release();
}

DataItem* DataArray::ElementAt(std::uint32_t index, Kind kind) noexcept {
    if (index >= children.Count()) return InsertAt(-1, kind);
    DataItem* const present = children[index];
    if (present && (kind == Kind::None || present->IsType(kind))) return present;
    std::unique_ptr<DataItem> element = NewElement(kind);
    if (!element) return nullptr;
    delete present;
    children[index] = element.release();
    MarkSet(ItemValueSet | (present ? kLostChild : ItemDirty));
    return children[index];
}

}  // namespace AUX::CAB
