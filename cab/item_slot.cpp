#include "cab/item_slot.h"

namespace AUX::CAB {

DataItem* KeySlot::Find() noexcept {
    if (!item && dictionary_) item = dictionary_->Find(key_);
    return item;
}

bool KeySlot::Ensure(Kind kind) noexcept {
    if (!dictionary_) return item != nullptr;
    DataItem* const made =
        dictionary_->GetOrAdd(key_.data(), static_cast<std::int64_t>(key_.size()), kind);
    if (!made) return false;
    item = made;
    dictionary_ = nullptr;
    return true;
}

Kind KeySlot::ExpectedKind() noexcept { return Find() ? item->GetType() : Kind::None; }

DataItem* IndexSlot::Find() noexcept {
    if (!item && array_) item = array_->ItemAt(index_);
    return item;
}

bool IndexSlot::Ensure(Kind kind) noexcept {
    if (!array_) return item != nullptr;
    DataItem* const made = array_->ElementAt(index_, kind);
    if (!made) return false;
    item = made;
    array_ = nullptr;
    return true;
}

Kind IndexSlot::ExpectedKind() noexcept {
    if (Find()) return item->GetType();
    const ItemSpec* const spec = array_ ? array_->ElementSpec() : nullptr;
    return spec ? spec->kind : Kind::None;
}

}  // namespace AUX::CAB
