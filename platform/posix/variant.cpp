#include <cstring>

#include "platform/automation.h"
#include "platform/com_ptr.h"
#include "platform/posix/variant_number.h"

namespace {

/// A reference or a text of its own; the rest is plain.
HRESULT Copy(VARIANT& to, const VARIANT& from) noexcept {
    to = from;
    if (from.vt == VT_BSTR && from.bstrVal) {
        to.bstrVal = SysAllocStringLen(from.bstrVal, SysStringLen(from.bstrVal));
        return to.bstrVal ? S_OK : E_OUTOFMEMORY;
    }
    if ((from.vt == VT_UNKNOWN || from.vt == VT_DISPATCH) && from.punkVal) from.punkVal->AddRef();
    return S_OK;
}

/// Bytes of a value's data; 0 for a kind without any, or one that is not known.
std::size_t SizeOf(VARTYPE kind) {
    switch (kind) {
        case VT_I1:
        case VT_UI1:
            return 1;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return 2;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            return 4;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
        case VT_BSTR:
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return 8;
        default:
            return 0;
    }
}

/// What a value given by reference refers to, lent.
bool Refer(const VARIANT& reference, VARIANT& value) {
    const auto kind = static_cast<VARTYPE>(reference.vt & ~VT_BYREF);
    if (kind == VT_VARIANT) {
        value = *static_cast<const VARIANT*>(reference.byref);
        return (value.vt & VT_BYREF) == 0;
    }
    if (kind == VT_DECIMAL) {
        value.decVal = *static_cast<const DECIMAL*>(reference.byref);
        value.vt = kind;
        return true;
    }
    const std::size_t size = SizeOf(kind);
    std::memcpy(&value.room, reference.byref, size);
    value.vt = kind;
    return size != 0;
}

template <class T>
bool Ask(IUnknown* object, T*& result) noexcept {
    platform::ComPtr<T> found;
    if (object && FAILED(platform::QueryFor(object, found))) return false;
    result = found.Detach();
    return true;
}

}  // namespace

void VariantInit(VARIANTARG* value) noexcept { *value = {}; }

HRESULT VariantClear(VARIANTARG* value) noexcept {
    switch (value->vt) {
        case VT_EMPTY:
        case VT_NULL:
        case VT_I2:
        case VT_I4:
        case VT_R4:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
        case VT_ERROR:
        case VT_BOOL:
        case VT_I1:
        case VT_UI1:
        case VT_UI2:
        case VT_UI4:
        case VT_I8:
        case VT_UI8:
        case VT_INT:
        case VT_UINT:
        case VT_DECIMAL:
            break;
        case VT_BSTR:
            SysFreeString(value->bstrVal);
            break;
        case VT_UNKNOWN:
        case VT_DISPATCH:
            if (value->punkVal) value->punkVal->Release();
            break;
        default:
            // What is given by reference belongs to somebody else.
            if ((value->vt & VT_BYREF) == 0) return DISP_E_BADVARTYPE;
    }
    VariantInit(value);
    return S_OK;
}

HRESULT VariantChangeType(VARIANTARG* target, const VARIANTARG* source, USHORT,
                          VARTYPE kind) noexcept {
    VARIANT referred{};
    if (source->vt & VT_BYREF) {
        if (!Refer(*source, referred)) return DISP_E_BADVARTYPE;
        source = &referred;
    }
    VARIANT made{};
    made.vt = kind;
    const bool isObject = source->vt == VT_UNKNOWN || source->vt == VT_DISPATCH;
    bool changed = false;
    if (source->vt == kind) {
        const HRESULT copied = Copy(made, *source);
        if (FAILED(copied)) return copied;
        changed = true;
    } else if (isObject && kind == VT_DISPATCH) {
        changed = Ask(source->punkVal, made.pdispVal);
    } else if (isObject && kind == VT_UNKNOWN) {
        changed = Ask(source->punkVal, made.punkVal);
    } else if (!isObject) {
        const HRESULT result = platform::ChangeNumber(made, *source);
        if (FAILED(result)) return result;
        changed = true;
    }
    if (!changed) return DISP_E_TYPEMISMATCH;
    const HRESULT cleared = VariantClear(target);
    if (FAILED(cleared)) {
        (void)VariantClear(&made);
        return cleared;
    }
    *target = made;
    return S_OK;
}
