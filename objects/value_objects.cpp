#include "objects/value_objects.h"

namespace AUX {

namespace {

// Null for a set of another class, and for none.
platform::ComPtr<IBitSetContent> ContentOf(IBitSet* set) noexcept {
    return platform::ComPtr<IBitSet>(set).As<IBitSetContent>();
}

}  // namespace

HRESULT TextObject::GetText(BSTR* text) noexcept {
    return GiveText(text, text_.Text(), text_.Length());
}

HRESULT TextObject::SetText(BSTR text) noexcept {
    return text_.Assign(text, SysStringLen(text)) ? S_OK : E_OUTOFMEMORY;
}

HRESULT TextObject::IsEmpty(VARIANT_BOOL* result) noexcept {
    return Give(result, ToVariantBool(text_.IsEmpty()));
}

HRESULT TextObject::Clear() noexcept {
    text_.Free();
    return S_OK;
}

HRESULT TextObject::GetLength(ULONG* length) noexcept { return Give(length, text_.Length()); }

HRESULT TextObject::SetTextOfLength(LPCWSTR text, ULONG length) noexcept {
    if (!text && length > 0) return E_INVALIDARG;
    return text_.Assign(text, length) ? S_OK : E_OUTOFMEMORY;
}

HRESULT BitSetObject::GetBit(ULONG index, VARIANT_BOOL* value) noexcept {
    return Give(value, ToVariantBool(bits_.Test(index)));
}

HRESULT BitSetObject::SetBit(ULONG index, VARIANT_BOOL value) noexcept {
    if (index >= bits_.Size()) return E_INVALIDARG;
    if (isReadOnly_) return S_FALSE;
    bits_.SetBit(index, value != VARIANT_FALSE);
    return S_OK;
}

HRESULT BitSetObject::GetSize(ULONG* size) noexcept { return Give(size, bits_.Size()); }

HRESULT BitSetObject::IsEmpty(VARIANT_BOOL* result) noexcept {
    return Give(result, ToVariantBool(bits_.None()));
}

HRESULT BitSetObject::IsAny(VARIANT_BOOL* result) noexcept {
    return Give(result, ToVariantBool(bits_.Any()));
}

HRESULT BitSetObject::Create(ULONG size) noexcept {
    if (isReadOnly_) return S_FALSE;
    BitSet made;  // The old bits stay if memory runs out.
    if (!made.Create(size)) return E_OUTOFMEMORY;
    bits_ = std::move(made);
    return S_OK;
}

HRESULT BitSetObject::Fill(VARIANT_BOOL value, ULONG first, ULONG count) noexcept {
    if (isReadOnly_ || count == 0 || first >= bits_.Size()) return S_FALSE;
    bits_.FillRange(value != VARIANT_FALSE, first, count);
    return S_OK;
}

HRESULT BitSetObject::SetBitGrow(ULONG index, VARIANT_BOOL value) noexcept {
    if (index == 0xFFFFFFFF) return E_INVALIDARG;
    if (isReadOnly_) return S_FALSE;
    bits_.SetBitGrow(index, value != VARIANT_FALSE);
    return index < bits_.Size() ? S_OK : E_OUTOFMEMORY;
}

template <class Change>
HRESULT BitSetObject::ChangeBy(IBitSet* other, Change change) noexcept {
    const platform::ComPtr<IBitSetContent> content = ContentOf(other);
    if (!content) return E_INVALIDARG;
    if (isReadOnly_) return S_FALSE;
    return change(content->Bits()) ? S_OK : E_OUTOFMEMORY;
}

HRESULT BitSetObject::Assign(IBitSet* other) noexcept {
    return ChangeBy(other, [this](const BitSet& bits) { return bits_.Assign(bits); });
}

HRESULT BitSetObject::Or(IBitSet* other) noexcept {
    return ChangeBy(other, [this](const BitSet& bits) { return bits_.Or(bits); });
}

HRESULT BitSetObject::And(IBitSet* other) noexcept {
    return ChangeBy(other, [this](const BitSet& bits) {
        bits_.And(bits);
        return true;
    });
}

HRESULT BitSetObject::AndNot(IBitSet* other) noexcept {
    return ChangeBy(other, [this](const BitSet& bits) {
        bits_.AndNot(bits);
        return true;
    });
}

HRESULT BitSetObject::Intersects(IBitSet* other, VARIANT_BOOL* result) noexcept {
    if (!result) return E_POINTER;
    *result = VARIANT_FALSE;
    const platform::ComPtr<IBitSetContent> content = ContentOf(other);
    return content ? Give(result, ToVariantBool(bits_.Intersects(content->Bits()))) : E_INVALIDARG;
}

HRESULT BitSetObject::IsEqual(IBitSet* other, VARIANT_BOOL* result) noexcept {
    if (!result) return E_POINTER;
    *result = VARIANT_FALSE;
    const platform::ComPtr<IBitSetContent> content = ContentOf(other);
    return content ? Give(result, ToVariantBool(bits_.Equal(content->Bits()))) : E_INVALIDARG;
}

HRESULT BitSetObject::CountRange(ULONG first, ULONG end, ULONG* count) noexcept {
    return Give(count, bits_.CountRange(first, end));
}

HRESULT SignalObject::Start() noexcept {
    event_.Reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (event_) return S_OK;
    const DWORD error = GetLastError();
    return error ? static_cast<HRESULT>(0x80070000 | (error & 0xFFFF)) : E_FAIL;
}

HRESULT SignalObject::GetState(VARIANT_BOOL* state) noexcept {
    return Give(state, ToVariantBool(WaitForSingleObject(event_.Get(), 0) == WAIT_OBJECT_0));
}

HRESULT SignalObject::SetState(VARIANT_BOOL state) noexcept {
    const BOOL isSet = state ? SetEvent(event_.Get()) : ResetEvent(event_.Get());
    return isSet ? S_OK : E_FAIL;
}

HRESULT SignalObject::GetHandle(void** handle) noexcept { return Give(handle, event_.Get()); }

}  // namespace AUX
