#include "cab/data_item.h"

#include "cab/create_item.h"
#include "cab/data_container.h"

namespace AUX::CAB {

namespace {

constexpr std::uintptr_t kHandleBit = 1;
constexpr std::uint32_t kCopiedFlags = ItemTransient | ItemDirty;

TemplateHandle* HandleOf(std::uintptr_t word) noexcept {
    return word & kHandleBit ? reinterpret_cast<TemplateHandle*>(word & ~kHandleBit) : nullptr;
}

}  // namespace

DataItemT<0>::~DataItemT() {
    if (ItemWrapper* const left = wrapper.exchange(nullptr)) left->OnTargetGone();
    DropSpec(spec);
}

void DataItemT<0>::DropSpec(std::uintptr_t word) noexcept { delete HandleOf(word); }

DataItem* DataItemT<0>::Cast(Kind kind) noexcept {
    return kind == Kind::None || kind == GetType() ? this : nullptr;
}

bool DataItemT<0>::Equals(DataItem*, std::uint32_t) noexcept { return false; }

bool DataItemT<0>::SetRoot(DataRoot* newRoot, bool) noexcept {
    root = newRoot;
    return true;
}

void DataItemT<0>::MarkSet(std::uint32_t bits) noexcept {
    if (root) root->MarkChanged();
    flags |= bits;
}

const ItemSpec* DataItemT<0>::GetSpec() noexcept {
    TemplateHandle* const handle = HandleOf(spec);
    return handle ? handle->GetSpec() : reinterpret_cast<const ItemSpec*>(spec);
}

bool DataItemT<0>::StartWithSpec(const ItemSpec* newSpec) noexcept {
    spec = reinterpret_cast<std::uintptr_t>(newSpec);
    if (newSpec && (newSpec->flags & SpecTemp)) flags |= ItemTransient;
    OnSpecChanged();
    if (IsContainer(GetType())) return true;
    ResetValue();
    return !newSpec || GetType() != Kind::String || IsDefault();
}

bool DataItemT<0>::ExchangeSpec(std::uintptr_t word, const ItemSpec* newSpec) noexcept {
    const std::uintptr_t old = spec;
    spec = word;
    OnSpecChanged();
    if (newSpec && !ApplySpec()) {
        spec = old;
        OnSpecChanged();
        return false;
    }
    if (newSpec) {
        flags = (flags & ~ItemTransient) | (newSpec->flags & SpecTemp ? ItemTransient : 0);
    }
    DropSpec(old);
    return true;
}

bool DataItemT<0>::SetSpec(const ItemSpec* newSpec) noexcept {
    if (newSpec && newSpec->kind != GetType()) return false;
    return ExchangeSpec(reinterpret_cast<std::uintptr_t>(newSpec), newSpec);
}

bool DataItemT<0>::SetSpecHandle(std::unique_ptr<TemplateHandle> handle) noexcept {
    const ItemSpec* const newSpec = handle ? handle->GetSpec() : nullptr;
    if (handle && (!newSpec || newSpec->kind != GetType())) return false;
    TemplateHandle* const taken = handle.get();
    if (!ExchangeSpec(taken ? reinterpret_cast<std::uintptr_t>(taken) | kHandleBit : 0, newSpec)) {
        return false;
    }
    (void)handle.release();  // The word owns it now.
    return true;
}

bool DataItemT<0>::AssignUnrelated(DataItem& source, bool withFlags) noexcept {
    if (!AssignValue(source, withFlags)) return false;
    if (withFlags) flags = (flags & ~kCopiedFlags) | (source.GetFlags() & kCopiedFlags);
    return true;
}

bool DataItemT<0>::Assign(DataItem* source, bool, bool withFlags) noexcept {
    if (!source) return false;
    DataItem* const real = source->Target(Kind::None);
    if (!real || real == this) return real == this;
    if (!IsBelow(*this, *real) && !IsBelow(*real, *this)) return AssignUnrelated(*real, withFlags);
    // What is read must not change, or go, while this item is written.
    const std::unique_ptr<DataItem> copy =
        CreateItem(nullptr, nullptr, nullptr, nullptr, real->GetType());
    return copy && copy->AssignUnrelated(*real, true) && AssignUnrelated(*copy, withFlags);
}

bool DataItemT<0>::ResetAndTell() noexcept {
    if (flags & ItemNoReset) return false;
    const bool hasChanged = ResetValue();
    flags &= ~ItemValueSet;
    if (hasChanged) MarkSet(ItemDirty);
    return hasChanged;
}

bool DataItemT<0>::Reset() noexcept {
    (void)ResetAndTell();  // That there was nothing to reset is a success.
    return true;
}

Status DataItemT<0>::GetProtected(WString&) noexcept { return E_FAIL; }

Status DataItemT<0>::SetProtected(WStringView text) noexcept {
    WString copy;
    if (!copy.Assign(text)) return E_OUTOFMEMORY;
    return SetString(copy, true) ? kStatusOk : E_INVALIDARG;
}

}  // namespace AUX::CAB
