#include "cab/data_dictionary.h"

#include "cab/create_item.h"
#include "cab/store.h"

namespace AUX::CAB {

DataDictionary::~DataDictionary() { DeleteAll(children); }

void DataDictionary::DeleteAll(Table& table) noexcept {
    for (const KeyEntry<DataItem*>& entry : table) {
        delete entry.value;
        Free(entry.key);
    }
    table.Free();
}

bool DataDictionary::Put(Table& table, WStringView key, std::unique_ptr<DataItem> item) noexcept {
    const std::int32_t found = FindKey(table, key.data(), KeyBytes(key));
    WCHAR* const copy = CopyKey(key);
    if (!copy) return false;
    if (!table.InsertAt(static_cast<std::uint32_t>(~found), {copy, KeyBytes(key), item.get()})) {
        Free(copy);
        return false;
    }
    (void)item.release();  // The table owns it now.
    return true;
}

bool DataDictionary::Equals(DataItem* other, std::uint32_t equalFlags) noexcept {
    DataItem* const real = other ? other->Cast(Kind::Dictionary) : nullptr;
    if (!real) return false;
    DataDictionary& dictionary = *real->AsDictionary();
    if (dictionary.GetCount() != GetCount()) return false;
    for (std::uint32_t i = 0; i < GetCount(); ++i) {
        if (!ItemAt(i)->Equals(dictionary.ItemAt(i), equalFlags)) return false;
    }
    return true;
}

void DataDictionary::SetStamp(std::uint64_t newStamp) noexcept {
    stamp = newStamp;
    flags &= ~ItemDirty;
}

bool DataDictionary::IsShaped() noexcept {
    const ItemSpec* const own = GetSpec();
    return own && !own->IsLoose();
}

bool DataDictionary::Populate() noexcept {
    if (!source) return true;
    source = nullptr;
    const ItemSpec* const own = GetSpec();
    if (!own || own->IsLoose() || FillFromSpec(children, *own)) return true;
    DeleteAll(children);
    return false;
}

bool DataDictionary::FillFromSpec(Table& table, const ItemSpec& own) noexcept {
    std::int64_t total = 0;
    (void)SpecAt(own, -1, &total);  // Only the number is asked for.
    if (total > 0x7FFFFFFF || !table.EnsureCapacity(static_cast<std::uint32_t>(total)))
        return false;
    return ForEachSpec(own, [&](const ItemSpec& entry) {
        if (!entry.name || entry.kind == Kind::None) return true;  // An invalid declaration.
        const WStringView key(entry.name);
        if (FindKey(table, key.data(), KeyBytes(key)) >= 0) return true;  // The first one stands.
        if (entry.kind == Kind::Container) return true;
        std::unique_ptr<DataItem> child = CreateItem(root, this, &entry, nullptr, entry.kind);
        if (!child) return false;
        if (DataItem* const old = &table == &children ? nullptr : Find(key)) {
            // A value that does not fit stays at its default.
            (void)child->AssignUnrelated(*old, false);
        }
        return Put(table, key, std::move(child));
    });
}

bool DataDictionary::FillLoose(Table& table, const ItemSpec* entry) noexcept {
    if (!entry) return true;
    for (const KeyEntry<DataItem*>& old : children) {
        std::unique_ptr<DataItem> child = CreateItem(root, this, entry, nullptr, entry->kind);
        if (!child) return false;
        if (!child->AssignUnrelated(*old.value, false)) continue;
        child->MarkNew();
        const WStringView key(static_cast<const WCHAR*>(old.key), old.keyBytes / sizeof(WCHAR));
        if (!Put(table, key, std::move(child))) return false;
    }
    return true;
}

bool DataDictionary::ApplySpec() noexcept {
    if (source) return true;  // It will be filled in the right shape.
    const ItemSpec* const own = GetSpec();
    Table table;
    if (!(own->IsLoose() ? FillLoose(table, SpecAt(*own, 0)) : FillFromSpec(table, *own))) {
        DeleteAll(table);
        return false;
    }
    bool hasLost = false;
    for (const KeyEntry<DataItem*>& old : children) {
        const std::int32_t found = FindKey(table, old.key, old.keyBytes);
        hasLost |= found < 0 ||
                   !table[static_cast<std::uint32_t>(found)].value->IsType(old.value->GetType());
    }
    std::swap(children, table);
    DeleteAll(table);
    MarkSet(ItemValueSet | ItemDirty | (hasLost ? ItemChildrenRemoved : 0));
    return true;
}

bool DataDictionary::SetRoot(DataRoot* newRoot, bool recursive) noexcept {
    root = newRoot;
    bool isWell = Populate();
    if (!recursive) return isWell;
    for (const KeyEntry<DataItem*>& entry : children) isWell &= entry.value->SetRoot(newRoot, true);
    return isWell;
}

bool DataDictionary::Preload() noexcept {
    bool isWell = Populate();
    for (const KeyEntry<DataItem*>& entry : children) isWell &= entry.value->Preload();
    return isWell;
}

bool DataDictionary::WriteTo(DataWriter& sink, bool skipDefaults) noexcept {
    if (!sink.PutContainer(Kind::Dictionary)) return false;
    for (std::uint32_t i = 0; i < GetCount(); ++i) {
        DataItem& child = *ItemAt(i);
        if (child.GetFlags() & ItemTransient || (skipDefaults && child.IsDefault())) continue;
        DataWriter* const place = sink.Add(KeyAt(i), child.GetStoredType());
        if (!place || !child.WriteTo(*place, skipDefaults)) return false;
    }
    return true;
}

bool DataDictionary::IsDefault() noexcept {
    for (const KeyEntry<DataItem*>& entry : children) {
        if (!entry.value->IsDefault()) return false;
    }
    return true;
}

void DataDictionary::SetTransientAll(bool isTransient) noexcept {
    for (const KeyEntry<DataItem*>& entry : children) {
        entry.value->SetFlags(isTransient ? ItemTransient : 0, ItemTransient);
    }
}

bool DataDictionary::Merge(WStringView key, DataItem* child, const ItemSpec* entry,
                           bool withFlags) noexcept {
    if (!child || child->GetFlags() & ItemNoCopy) return true;
    const std::int32_t found = FindKey(children, key.data(), KeyBytes(key));
    DataItem* const mine = found >= 0 ? children[static_cast<std::uint32_t>(found)].value : nullptr;
    if (mine && mine->IsType(Kind::Dictionary)) {
        (void)mine->AssignUnrelated(*child, withFlags);  // What does not fit is passed over.
        return true;
    }
    std::unique_ptr<DataItem> copy = CreateItem(root, this, entry, nullptr, child->GetType());
    if (!copy) return false;
    if (!copy->AssignUnrelated(*child, withFlags)) return true;
    if (!withFlags) copy->MarkNew();
    if (!mine) {
        if (!Put(children, key, std::move(copy))) return false;
        MarkSet();
        return true;
    }
    const bool isStale = mine->GetType() != copy->GetType();
    delete mine;
    children[static_cast<std::uint32_t>(found)].value = copy.release();
    MarkSet(ItemValueSet | ItemDirty | (isStale ? ItemChildrenRemoved : 0));
    return true;
}

bool DataDictionary::AssignValue(DataItem& from, bool withFlags) noexcept {
    DataItem* const real = from.Cast(Kind::Dictionary);
    if (!real) return false;
    DataDictionary& other = *real->AsDictionary();
    if (!other.Preload()) return false;
    const ItemSpec* const own = GetSpec();
    bool isWell = true;
    if (own && !own->IsLoose()) {
        isWell = ForEachSpec(*own, [&](const ItemSpec& entry) {
            // Of two declarations of one key the first one stands, and so does its value.
            if (!entry.name) return true;
            DataItem* const present = Find(entry.name);
            if (!present || present->GetSpec() != &entry) return true;
            return Merge(entry.name, other.Find(entry.name), &entry, withFlags);
        });
    } else {
        const ItemSpec* const entry = own ? SpecAt(*own, 0) : nullptr;
        for (std::uint32_t i = 0; isWell && i < other.GetCount() && (entry || !own); ++i) {
            isWell = Merge(other.KeyAt(i), other.ItemAt(i), entry, withFlags);
        }
    }
    if (isWell && withFlags) stamp = other.stamp;
    return isWell;
}

bool DataDictionary::ResetValue() noexcept {
    if (children.IsEmpty()) return false;
    if (IsShaped()) {
        bool hasChanged = false;
        for (const KeyEntry<DataItem*>& entry : children) hasChanged |= entry.value->ResetAndTell();
        return hasChanged;
    }
    DeleteAll(children);
    flags |= ItemChildrenRemoved;
    return true;
}

DataItem* DataDictionary::ItemAt(std::uint32_t index) noexcept {
    return index < children.Count() ? children[index].value : nullptr;
}

WStringView DataDictionary::KeyAt(std::uint32_t index) const noexcept {
    if (index >= children.Count()) return {};
    const KeyEntry<DataItem*>& entry = children[index];
    return {static_cast<const WCHAR*>(entry.key), entry.keyBytes / sizeof(WCHAR)};
}

DataItem* DataDictionary::Find(WStringView key) noexcept {
    if (key.size() > kMaxKeyUnits) return nullptr;
    const std::int32_t found = hints.Find(children, key);
    return found >= 0 ? children[static_cast<std::uint32_t>(found)].value : nullptr;
}

void DataDictionary::Clear() noexcept {
    if (children.IsEmpty() || IsShaped()) return;
    DeleteAll(children);
    MarkSet(0);
}

void DataDictionary::Drop(WStringView key) noexcept {
    const std::int32_t found = FindKey(children, key.data(), KeyBytes(key));
    if (found < 0) return;
    const auto index = static_cast<std::uint32_t>(found);
    delete children[index].value;
    Free(children[index].key);
    children.RemoveAt(index);
}

bool DataDictionary::RemoveAt(std::int64_t index) noexcept {
    if (index < 0 || index >= children.Count() || IsShaped()) return false;
    Drop(KeyAt(static_cast<std::uint32_t>(index)));
    MarkSet(ItemValueSet | ItemDirty | ItemChildrenRemoved);
    return true;
}

bool DataDictionary::RemoveKey(WStringView key) noexcept {
    if (!Find(key) || IsShaped()) return false;
    Drop(key);
    MarkSet(ItemValueSet | ItemDirty | ItemChildrenRemoved);
    return true;
}

DataItem* DataDictionary::GetOrAdd(const WCHAR* name, std::int64_t length, Kind kind) noexcept {
    const WStringView key =
        length < 0 ? WStringView(name) : WStringView(name, static_cast<std::size_t>(length));
    if (key.size() > kMaxKeyUnits || !Populate()) return nullptr;
    if (DataItem* const present = Find(key)) return present->Cast(kind);
    if (kind == Kind::None) return nullptr;
    const ItemSpec* entry = nullptr;
    if (const ItemSpec* const own = GetSpec()) {
        entry = own->IsLoose() ? SpecAt(*own, 0) : nullptr;
        if (!entry || entry->kind != kind) return nullptr;
    }
    std::unique_ptr<DataItem> child = CreateItem(root, this, entry, nullptr, kind);
    DataItem* const added = child.get();
    if (child) child->MarkNew();
    if (!child || !Put(children, key, std::move(child))) return nullptr;
    MarkSet();
    return added;
}

bool DataDictionary::ResetKey(const WCHAR* name, std::int64_t length) noexcept {
    DataItem* const child = GetOrAdd(name, length, Kind::None);
    return child && child->Reset();
}

}  // namespace AUX::CAB
