#include "platform/automation.h"
#include "platform/com_ptr.h"

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
